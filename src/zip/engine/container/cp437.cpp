#include "zip/engine/container/cp437.h"

#include "platform/utf8.h"

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
    platform::appendUtf8(out, byte < 0x80 ? char32_t{byte} : kUpperHalf[byte - 0x80U]);
  }
  return out;
}

}  // namespace zip_engine
