#include "zip/engine/cp437.h"

namespace zip_engine {
namespace {

// The characters of the bytes 0x80 to 0xFF.
constexpr std::u16string_view kUpperHalf =
    u"ÇüéâäàåçêëèïîìÄÅÉæÆôöòûùÿÖÜ¢£¥₧ƒáíóúñÑªº¿⌐¬½¼¡«»░▒▓│┤╡╢╖╕╣║╗╝╜╛┐└┴┬├─┼╞╟╚╔╩╦╠═╬╧"
    u"╨╤╥╙╘╒╓╫╪┘┌█▄▌▐▀αßΓπΣσµτΦΘΩδ∞φε∩≡±≥≤⌠⌡÷≈°∙·√ⁿ²■\u00A0";
static_assert(kUpperHalf.size() == 128);

}  // namespace

std::string utf8OfCp437(std::string_view text) {
  std::string out;
  for (const char c : text) {
    const unsigned char byte = static_cast<unsigned char>(c);
    const auto add = [&](unsigned unit) { out += static_cast<char>(unit); };
    if (byte < 0x80) {
      add(byte);
      continue;
    }
    const unsigned value = kUpperHalf[byte - 0x80U];
    if (value < 0x800) {
      add(0xC0 | value >> 6);
    } else {
      add(0xE0 | value >> 12);
      add(0x80 | (value >> 6 & 0x3F));
    }
    add(0x80 | (value & 0x3F));
  }
  return out;
}

}  // namespace zip_engine
