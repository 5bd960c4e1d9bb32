#include "links.h"

bool isKeptLink(const std::filesystem::path&) { return false; }
