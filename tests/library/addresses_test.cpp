// Hosts keep the addresses of exports, as in
//
//   std::function<bool(const char*, const char*)> pack = FRT_ZIP_FOLDER;
//   auto password = &ZipArchive::password;
//
// An overload of such a name makes its address ambiguous, and this file then does not compile. The
// names that have several forms need a cast, as they do in hosts. Constructors and destructors have
// no address, and FileStream::doWrite is private.

#include <filesystem/filesystem.h>

#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using namespace FileSystem;

using String = std::string;
using Strings = std::vector<std::string>;
using Records = std::vector<FILE_INFORMATION>;
using Bytes = std::vector<unsigned char>;
using Filter = boost::function1<int, const char*>;

// Returns the address of the form of an export that has the type.
template <typename Type>
Type form(Type address);

// Frame.
static_assert(std::is_same_v<decltype(&InitFileSystemDLL), void (*)()>);

// Path text.
using OfPath = String (*)(const String&);
static_assert(std::is_same_v<decltype(&extractDrive), OfPath>);
static_assert(std::is_same_v<decltype(&extractPath), OfPath>);
static_assert(std::is_same_v<decltype(&extractFilename), OfPath>);
static_assert(std::is_same_v<decltype(&extractName), OfPath>);
static_assert(std::is_same_v<decltype(&extractExtension), OfPath>);
static_assert(std::is_same_v<decltype(&eraseInvalidCharacter), OfPath>);
using OfTwoTexts = String (*)(const String&, const String&);
static_assert(std::is_same_v<decltype(&replaceExtension), OfTwoTexts>);
static_assert(std::is_same_v<decltype(&subPath), OfTwoTexts>);
static_assert(std::is_same_v<decltype(&pathEqual), bool (*)(const String&, const String&)>);
static_assert(std::is_same_v<decltype(&ParentDirectory), CString (*)(const char*)>);
static_assert(std::is_same_v<decltype(&PathRoot), void (*)(const char*, CString&)>);

// Files and folders.
using Question = int (*)(const char*);
static_assert(std::is_same_v<decltype(&FileExists), Question>);
static_assert(std::is_same_v<decltype(&FolderExists), Question>);
static_assert(std::is_same_v<decltype(&IsFileLockedWrite), Question>);
static_assert(std::is_same_v<decltype(&IsFileReadOnly), Question>);
static_assert(std::is_same_v<decltype(&EnsurePathExists), Question>);
static_assert(std::is_same_v<decltype(&IsValidPath), Question>);
static_assert(std::is_same_v<decltype(&DeleteEmptyFolder), Question>);
static_assert(std::is_same_v<decltype(&CreateLockFile), Question>);
static_assert(std::is_same_v<decltype(&DeleteLockFile), Question>);
static_assert(std::is_same_v<decltype(&isFileXml), Question>);
static_assert(std::is_same_v<decltype(&TestCreate), int (*)(const char*, unsigned long)>);
static_assert(std::is_same_v<decltype(&TestOpen), int (*)(const char*, unsigned long)>);
static_assert(std::is_same_v<decltype(&AllowedAccess), unsigned long (*)(const char*)>);
static_assert(std::is_same_v<decltype(&fileTime), double (*)(const String&)>);
static_assert(std::is_same_v<decltype(&FileSystem::CopyFileA),
                             int (*)(const char*, const char*, unsigned int)>);
static_assert(std::is_same_v<decltype(&CopyContent), long (*)(const String&, const String&)>);
static_assert(std::is_same_v<decltype(&eraseOldFile), unsigned int (*)(const String&, unsigned)>);
static_assert(
    std::is_same_v<decltype(&VerGetFileInfoString), int (*)(const char*, const char*, CString&)>);
static_assert(std::is_same_v<decltype(&FormatVersion), int (*)(const char*, CString&)>);

// Enumeration.
static_assert(sizeof(form<std::uint64_t (*)(Strings&, const char*, const char*)>(&EnumFiles)) != 0);
static_assert(sizeof(form<std::uint64_t (*)(Strings&, const char*, const char*, const char*, ...)>(
                  &EnumFiles)) != 0);
static_assert(sizeof(form<std::uint64_t (*)(CStringArray&, const char*, const char*, const char*,
                                            ...)>(&EnumFiles)) != 0);
static_assert(
    sizeof(form<std::uint64_t (*)(Records&, const char*, const char*)>(&EnumFilesWithPath)) != 0);
static_assert(sizeof(form<std::uint64_t (*)(Strings&, const char*, const char*, bool)>(
                  &EnumFilesWithPath)) != 0);
static_assert(sizeof(form<std::uint64_t (*)(Records&, const char*, int)>(&EnumFolders)) != 0);
static_assert(sizeof(form<std::uint64_t (*)(Strings&, const char*, int)>(&EnumFolders)) != 0);
static_assert(std::is_same_v<decltype(&EnumFilesWithPathEx),
                             std::uint64_t (*)(Records&, const char*, const char*, const Filter&)>);
static_assert(std::is_same_v<decltype(&EnumFoldersEx),
                             std::uint64_t (*)(Records&, const char*, const Filter&, int)>);

// Whole files and XML text.
static_assert(std::is_same_v<decltype(&readContent), OfPath>);
static_assert(std::is_same_v<decltype(&writeContent), bool (*)(const String&, const String&)>);
static_assert(std::is_same_v<decltype(&Xml::toXml), OfPath>);
static_assert(std::is_same_v<decltype(&Xml::fromXml), OfPath>);
static_assert(std::is_same_v<decltype(&Xml::toXmlTag), OfPath>);
using OfThreeTexts = String (*)(const String&, const String&, const String&);
static_assert(std::is_same_v<decltype(&Xml::xmlAttribute), OfThreeTexts>);
static_assert(std::is_same_v<decltype(&Xml::Raw::xmlAttribute), OfThreeTexts>);
static_assert(
    std::is_same_v<decltype(&Xml::xmlContent), String (*)(const String&, const String&, bool)>);
static_assert(std::is_same_v<decltype(&Xml::Raw::xmlContent), OfTwoTexts>);
static_assert(std::is_same_v<decltype(&Xml::xmlDefine), OfTwoTexts>);
static_assert(std::is_same_v<decltype(&Xml::xmlExtract), String (*)(String&, const String&, bool)>);

// FileStream.
static_assert(std::is_same_v<decltype(&FileStream::operator=),
                             FileStream& (FileStream::*)(const FileStream&)>);
static_assert(std::is_same_v<decltype(&FileStream::open), bool (FileStream::*)(const char*, int)>);
static_assert(std::is_same_v<decltype(&FileStream::close), bool (FileStream::*)()>);
static_assert(std::is_same_v<decltype(&FileStream::is_open), bool (FileStream::*)() const>);
static_assert(std::is_same_v<decltype(&FileStream::write), bool (FileStream::*)(const String&)>);
static_assert(sizeof(form<bool (FileStream::*)(const String&)>(&FileStream::put)) != 0);
static_assert(sizeof(form<bool (FileStream::*)(char)>(&FileStream::put)) != 0);
static_assert(std::is_same_v<decltype(&FileStream::flush), void (FileStream::*)()>);
static_assert(sizeof(form<void (FileStream::*)(unsigned int)>(&FileStream::bufferSize)) != 0);
static_assert(sizeof(form<unsigned int (FileStream::*)() const>(&FileStream::bufferSize)) != 0);
static_assert(std::is_same_v<decltype(&FileStream::seekBOF), bool (FileStream::*)()>);
static_assert(std::is_same_v<decltype(&FileStream::seekEOF), bool (FileStream::*)()>);
static_assert(std::is_same_v<decltype(&FileStream::size), std::uint64_t (FileStream::*)() const>);
static_assert(std::is_same_v<decltype(&FileStream::swap), void (FileStream::*)(FileStream&)>);
static_assert(std::is_same_v<decltype(&FileStream::truncate), void (FileStream::*)()>);
static_assert(
    std::is_same_v<decltype(&FileStream::read), bool (FileStream::*)(std::vector<char>&)>);
static_assert(std::is_same_v<decltype(&FileStream::append), bool (FileStream::*)(FileStream&)>);
static_assert(std::is_same_v<decltype(&FileStream::operator<<),
                             FileStream& (FileStream::*)(FileStream& (*)(FileStream&))>);
static_assert(sizeof(form<FileStream& (*)(FileStream&, FileStream&)>(&::operator<<)) != 0);
static_assert(sizeof(form<FileStream& (*)(FileStream&, const String&)>(&::operator<<)) != 0);
static_assert(sizeof(form<FileStream& (*)(FileStream&, long)>(&::operator<<)) != 0);
static_assert(sizeof(form<FileStream& (*)(FileStream&, const char*)>(&::operator<<)) != 0);

// TemporaryStorage.
static_assert(std::is_same_v<decltype(&TemporaryStorage::operator=),
                             TemporaryStorage& (TemporaryStorage::*)(const TemporaryStorage&)>);
static_assert(std::is_same_v<decltype(&TemporaryStorage::create),
                             bool (TemporaryStorage::*)(const String&, bool)>);
static_assert(std::is_same_v<decltype(&TemporaryStorage::clear), void (TemporaryStorage::*)()>);
static_assert(
    std::is_same_v<decltype(&TemporaryStorage::path), String (TemporaryStorage::*)() const>);
static_assert(
    std::is_same_v<decltype(&TemporaryStorage::basePath), String (TemporaryStorage::*)() const>);

// ZipArchive.
static_assert(std::is_same_v<decltype(&ZipArchive::operator=),
                             ZipArchive& (ZipArchive::*)(const ZipArchive&)>);
static_assert(
    std::is_same_v<decltype(&ZipArchive::open), int (ZipArchive::*)(const char*, unsigned int)>);
static_assert(std::is_same_v<decltype(&ZipArchive::create), int (ZipArchive::*)(const char*, int)>);
static_assert(std::is_same_v<decltype(&ZipArchive::close), int (ZipArchive::*)()>);
static_assert(std::is_same_v<decltype(&ZipArchive::password), void (ZipArchive::*)(const char*)>);
static_assert(std::is_same_v<decltype(&ZipArchive::access), unsigned int (ZipArchive::*)() const>);
static_assert(std::is_same_v<decltype(&ZipArchive::canRead), int (ZipArchive::*)() const>);
static_assert(std::is_same_v<decltype(&ZipArchive::canWrite), int (ZipArchive::*)() const>);
static_assert(std::is_same_v<decltype(&ZipArchive::fileName), const char* (ZipArchive::*)() const>);
static_assert(std::is_same_v<decltype(&ZipArchive::isZip), int (*)(const char*)>);
static_assert(
    std::is_same_v<decltype(&ZipArchive::enumerate), int (ZipArchive::*)(Strings&) const>);
static_assert(std::is_same_v<decltype(&ZipArchive::content),
                             int (ZipArchive::*)(std::vector<std::pair<String, String>>&) const>);
static_assert(std::is_same_v<decltype(&ZipArchive::exist), int (ZipArchive::*)(const char*) const>);
static_assert(std::is_same_v<decltype(&ZipArchive::empty), int (ZipArchive::*)() const>);
static_assert(sizeof(form<int (ZipArchive::*)(const Strings&, const char*) const>(
                  &ZipArchive::extract)) != 0);
static_assert(
    sizeof(form<int (ZipArchive::*)(const char*, const char*) const>(&ZipArchive::extract)) != 0);
static_assert(sizeof(form<int (ZipArchive::*)(const char*, Bytes&) const>(&ZipArchive::extract)) !=
              0);
static_assert(sizeof(form<int (ZipArchive::*)(const Bytes&, const String&, const String&, int)>(
                  &ZipArchive::insert)) != 0);
static_assert(sizeof(form<int (ZipArchive::*)(const char*, const char*, const char*, int)>(
                  &ZipArchive::insert)) != 0);
static_assert(std::is_same_v<decltype(&ZipArchive::remove), int (ZipArchive::*)(const char*)>);
static_assert(std::is_same_v<decltype(&FRT_ZIP_FOLDER), bool (*)(const char*, const char*)>);
static_assert(std::is_same_v<decltype(&FRT_UNZIP_FILE), bool (*)(const char*, const char*)>);
static_assert(std::is_constructible_v<std::function<bool(const char*, const char*)>,
                                      decltype(FRT_ZIP_FOLDER)>);

// The ways to construct the classes, with arguments that another constructor would be ambiguous
// for.
static_assert(std::is_default_constructible_v<FileStream>);
static_assert(std::is_constructible_v<FileStream, const char*, int>);
static_assert(std::is_copy_constructible_v<FileStream>);
static_assert(std::is_default_constructible_v<TemporaryStorage>);
static_assert(std::is_copy_constructible_v<TemporaryStorage>);
static_assert(std::is_default_constructible_v<ZipArchive>);
static_assert(std::is_copy_constructible_v<ZipArchive>);
static_assert(std::has_virtual_destructor_v<ZipArchive>);

}  // namespace
