#pragma once
/// @file
/// XML as plain text: escaping, and elements and attributes found by substring
/// search, with no document tree. Nothing here is a parser: comments, CDATA
/// sections, namespaces and quotes are not looked at. Texts are bytes.

#include <filesystem/export.h>

#include <string>

namespace FileSystem {

/// Whether a file starts like an XML document: its first word begins with the
/// five bytes `<?xml`, white space in front aside.
/// @param path path of the file
/// @return 1 or 0; a file that cannot be read gives 0
FILESYSTEM_API int isFileXml(const char* path);

namespace Xml {

/// Escapes text for the place between tags or inside a double-quoted attribute:
/// the five characters `< > & ' "` become named entities, and control
/// characters other than 0, tab, line feed and carriage return are dropped.
FILESYSTEM_API std::string toXml(const std::string& text);

/// Undoes the five named entities, one after the other in the order `&lt;`,
/// `&gt;`, `&amp;`, `&apos;`, `&quot;`; what one replacement makes feeds the
/// replacements of its own kind and of the later ones. Numeric references stay.
/// Linear in the length of the text.
FILESYSTEM_API std::string fromXml(const std::string& text);

/// Turns free text into a tag or attribute name: accented letters become plain
/// ones, blanks and marks become `_`, letters become small. Bytes are taken as
/// Windows-1252. The result need not be a valid XML name.
FILESYSTEM_API std::string toXmlTag(const std::string& name);

/// Content of the first element of a name, nested elements of the same name
/// paired.
/// @param text         text that holds the element
/// @param tag          its name, not empty; cleaned with toXmlTag
/// @param wholeElement true for the element with its tags, not unescaped; false
///                     for its content, unescaped
/// @return the content; empty if the element is empty or not found
FILESYSTEM_API std::string xmlContent(const std::string& text, const std::string& tag,
                                      bool wholeElement);

/// Value of an attribute of the first element of a name, unescaped.
/// @param text      text that holds the element
/// @param tag       name of the element; cleaned with toXmlTag
/// @param attribute name of the attribute; cleaned with toXmlTag
/// @return the value; empty if it is empty or not found
FILESYSTEM_API std::string xmlAttribute(const std::string& text, const std::string& tag,
                                        const std::string& attribute);

/// Writes one element: `<name />` for an empty value, otherwise
/// `<name>value</name>`.
/// @param tag   name of the element; cleaned with toXmlTag
/// @param value its content; escaped with toXml
FILESYSTEM_API std::string xmlDefine(const std::string& tag, const std::string& value);

/// Takes the first element of a name out of a text.
/// @param text         the text; the element is removed from it, and nothing
///                     around it. Unchanged if the element is not found.
/// @param tag          its name, not empty; cleaned with toXmlTag
/// @param wholeElement true for the element with its tags, not unescaped; false
///                     for its content, unescaped. With false an empty element
///                     written as a pair is not taken.
/// @return the element or its content; empty also for an empty element, so that
///         only the length of `text` tells whether one was removed
FILESYSTEM_API std::string xmlExtract(std::string& text, const std::string& tag, bool wholeElement);

/// Forms that take names literally, return bytes as they stand, and do not look
/// at nesting.
namespace Raw {

/// Bytes between the first start tag of a name and the first closing tag.
/// @param text text that holds the element
/// @param tag  its name, as it stands in the text
/// @return the bytes; empty if the element is empty or not found
FILESYSTEM_API std::string xmlContent(const std::string& text, const std::string& tag);

/// Bytes of an attribute's value in the first element of a name.
/// @param text      text that holds the element
/// @param tag       name of the element, as it stands in the text
/// @param attribute name of the attribute, as it stands in the text
/// @return the bytes; empty if the value is empty or not found
FILESYSTEM_API std::string xmlAttribute(const std::string& text, const std::string& tag,
                                        const std::string& attribute);

}  // namespace Raw
}  // namespace Xml
}  // namespace FileSystem
