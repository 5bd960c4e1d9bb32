#pragma once
// Code page 437, the encoding of entry names that are not flagged as UTF-8 (APPNOTE appendix D.1).

#include <string>
#include <string_view>

namespace zip_engine {

std::string utf8OfCp437(std::string_view text);

}  // namespace zip_engine
