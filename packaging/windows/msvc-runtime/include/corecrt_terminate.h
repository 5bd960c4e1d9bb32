#pragma once
#include <eh.h>
