#pragma once
/// @file
/// XML as plain text: escaping, and elements and attributes found by substring search, without a
/// document tree. This is no parser: comments, CDATA sections, namespaces and quotes are ordinary
/// text. Texts are bytes in any encoding that extends ASCII. An element or attribute that is not
/// found is reported as an empty text.
///
/// @code
/// namespace Xml = FileSystem::Xml;
/// std::string text = Xml::xmlDefine("User", "Ann & Bob");  // <user>Ann &amp; Bob</user>
/// Xml::xmlContent(text, "User", false);                    // Ann & Bob
/// Xml::xmlExtract(text, "User", true);                     // the element; text is empty now
/// Xml::xmlAttribute("<item id=\"7\"/>", "item", "id");     // 7
/// @endcode

#include <filesystem/export.h>

#include <cstddef>
#include <string>

namespace FileSystem {

/// Reports whether a file begins like an XML document: with the five bytes `<?xml`, after white
/// space of the global locale. A byte order mark is no white space.
/// @param path path of the file, not null
/// @return 1 or 0; 0 also if the file cannot be read
FILESYSTEM_API int isFileXml(const char* path);

namespace Xml {

/// Escapes text for use between tags or inside an attribute in double quotes: replaces `<`, `>`,
/// `&`, `'` and `"` by named entities, and drops the control characters other than 0, tab, line
/// feed and carriage return.
FILESYSTEM_API std::string toXml(const std::string& text);

/// Replaces the named entities of toXml() by their characters, kind by kind in the order `&lt;`,
/// `&gt;`, `&amp;`, `&apos;`, `&quot;`. An `&` that results is combined with the text after it, but
/// not to one of the earlier kinds: `&amp;quot;` becomes `"`, `&amp;lt;` becomes `&lt;`. Numeric
/// references and all other text are kept unchanged. Takes linear time.
FILESYSTEM_API std::string fromXml(const std::string& text);

/// Makes a tag or attribute name of free text: replaces accented lower-case letters by plain ones,
/// spaces and marks by `_`, `@` by `_at_`, and converts the result to lower case. Bytes are taken
/// as Windows-1252. The result need not be a valid XML name: digits, colons and dots are kept, and
/// an empty text remains empty.
FILESYSTEM_API std::string toXmlTag(const std::string& name);

/// Returns the content of the first element of a name. Nested elements of the same name are paired.
/// @param text         text that contains the element
/// @param tag          name of the element, not empty; converted by toXmlTag()
/// @param wholeElement true for the element with its tags, not unescaped; false for its content,
///                     unescaped
/// @return the content or element; empty if the element is not found, is empty, or lacks an end tag
FILESYSTEM_API std::string xmlContent(const std::string& text, const std::string& tag,
                                      bool wholeElement);

/// Returns the value of an attribute of the first element of a name, unescaped.
/// @param text      text that contains the element
/// @param tag       name of the element; converted by toXmlTag()
/// @param attribute name of the attribute; converted by toXmlTag()
/// @return the value; empty if it is empty, not found, or not in double quotes
FILESYSTEM_API std::string xmlAttribute(const std::string& text, const std::string& tag,
                                        const std::string& attribute);

/// Writes one element: `<name />` for an empty value, otherwise `<name>value</name>`.
/// @param tag   name of the element; converted by toXmlTag()
/// @param value content; escaped by toXml()
FILESYSTEM_API std::string xmlDefine(const std::string& tag, const std::string& value);

/// Removes the first element of a name from a text.
/// @param text         text that contains the element; loses the element and nothing around it.
///                     Unchanged if the element is not found.
/// @param tag          name of the element, not empty; converted by toXmlTag()
/// @param wholeElement true for the element with its tags, not unescaped; false for its content,
///                     unescaped. With false, `<name></name>` is not removed; `<name />` is.
/// @return the element or its content. An empty result does not mean that nothing was removed:
///         compare the size of `text` before and after.
///
/// Each call searches the text from its beginning and moves what follows the element. To read many
/// elements use an ElementCursor.
FILESYSTEM_API std::string xmlExtract(std::string& text, const std::string& tag, bool wholeElement);

/// Reads all elements of a name, one after the other, in time linear in the size of the text.
///
/// @code
/// for (Xml::ElementCursor users(text, "User"); users.next();) addUser(users.content());
/// @endcode
///
/// Unlike the functions above it takes only elements of exactly this name: `user` is not found in
/// `<users>`. Nested elements of the same name are paired and belong to the content of the outer one.
class FILESYSTEM_API ElementCursor {
 public:
  /// Begins before the first element.
  /// @param text text that contains the elements; it must outlive the cursor and remain unchanged
  /// @param tag  name of the elements, not empty; converted by toXmlTag()
  ElementCursor(const std::string& text, const std::string& tag);
  /// A temporary text would not outlive the cursor.
  ElementCursor(std::string&& text, const std::string& tag) = delete;

  /// Moves to the next element.
  /// @return false if there is none, or if it lacks an end tag
  bool next();
  /// Returns the element with its tags, not unescaped; empty before the first and after the last one.
  std::string element() const;
  /// Returns the content, unescaped; empty for `<name/>`, before the first and after the last one.
  std::string content() const;

 private:
  const std::string* text_;
  std::string opening_;           // `<` and the name
  std::string closing_;           // the end tag
  std::size_t position_ = 0;      // of the element's `<`
  std::size_t contentStart_ = 0;  // after the `>` of its start tag
  std::size_t contentEnd_ = 0;
  std::size_t end_ = 0;  // after the element
};

/// Forms that take names literally, return bytes unchanged, and ignore nesting.
namespace Raw {

/// Returns the bytes between the first start tag of a name and the first end tag.
/// @param text text that contains the element
/// @param tag  name of the element, as in the text
/// @return the bytes; empty if the element is not found, is empty, or lacks an end tag
FILESYSTEM_API std::string xmlContent(const std::string& text, const std::string& tag);

/// Returns the value of an attribute of the first element of a name, not unescaped.
/// @param text      text that contains the element
/// @param tag       name of the element, as in the text
/// @param attribute name of the attribute, as in the text
/// @return the bytes; empty if the value is empty, not found, or not in double quotes
FILESYSTEM_API std::string xmlAttribute(const std::string& text, const std::string& tag,
                                        const std::string& attribute);

}  // namespace Raw
}  // namespace Xml
}  // namespace FileSystem
