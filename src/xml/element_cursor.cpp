#include <filesystem/xml.h>

#include <string_view>

#include "xml/text_search.h"

namespace FileSystem::Xml {
namespace {

// Returns the position of the next start tag of exactly this name, or kNone. `opening` is `<` and the
// name.
std::size_t findStartTag(std::string_view text, std::string_view opening, std::size_t from) {
  constexpr std::string_view kAfterName = " \t\r\n/>";
  for (;;) {
    const std::size_t at = Detail::findText(text, opening, from);
    if (at == kNone || at + opening.size() == text.size()) return kNone;
    if (kAfterName.find(text[at + opening.size()]) != kNone) return at;
    from = at + opening.size();
  }
}

bool isEmptyElement(std::string_view text, std::size_t contentStart) {
  return text[contentStart - 2] == '/';
}

// Returns the position of the end tag of an element, or kNone if there are too few end tags.
std::size_t pairedEndTag(std::string_view text, std::string_view opening, std::string_view closing,
                         std::size_t contentStart) {
  std::size_t at = contentStart;
  std::size_t end = Detail::findText(text, closing, at);
  while (end != kNone) {
    // One more end tag belongs to each start tag before this one.
    at = findStartTag(text.substr(0, end), opening, at);
    if (at == kNone) break;
    at = text.find('>', at) + 1;
    if (!isEmptyElement(text, at)) end = Detail::findText(text, closing, end + closing.size());
  }
  return end;
}

}  // namespace

ElementCursor::ElementCursor(const std::string& text, const std::string& tag)
    : text_(&text), opening_('<' + toXmlTag(tag)), closing_("</" + toXmlTag(tag) + '>') {}

bool ElementCursor::next() {
  const std::string_view text(*text_);
  // After the last element all further searches begin at the end of the text.
  position_ = findStartTag(text, opening_, end_);
  const std::size_t tagEnd = text.find('>', position_);
  if (tagEnd != kNone) {
    contentStart_ = tagEnd + 1;
    if (isEmptyElement(text, contentStart_)) {
      contentEnd_ = end_ = contentStart_;
      return true;
    }
    contentEnd_ = pairedEndTag(text, opening_, closing_, contentStart_);
    end_ = contentEnd_ + closing_.size();
    if (contentEnd_ != kNone) return true;
  }
  position_ = contentStart_ = contentEnd_ = end_ = text.size();
  return false;
}

std::string ElementCursor::element() const { return text_->substr(position_, end_ - position_); }

std::string ElementCursor::content() const {
  return fromXml(text_->substr(contentStart_, contentEnd_ - contentStart_));
}

}  // namespace FileSystem::Xml
