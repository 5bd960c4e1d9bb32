#pragma once
// The subset of Win32 that the library uses, for Linux. Each function returns the
// published results and sets the published error codes. Differences are described
// with the function.
//
// Path texts: `\` and `/` separate components. `C:` is the root of the file
// system; other drives and shares exist once they are mapped with
// DefineDosDeviceA. U+F05C in a component represents a backslash in the name. All
// text is UTF-8, and ill-formed bytes pass unchanged. Paths have up to PATH_MAX
// bytes, not MAX_PATH, unless the function says otherwise.

#include <cstddef>
#include <cstdint>

using BOOL = int;
using BYTE = std::uint8_t;
using WORD = std::uint16_t;
using DWORD = std::uint32_t;
using LONG = std::int32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using UINT = std::uint32_t;
using WCHAR = char16_t;
using HRESULT = std::int32_t;
using HANDLE = void*;
using HMODULE = void*;
using HINSTANCE = HMODULE;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr std::size_t MAX_PATH = 260;
// A reinterpret_cast is no constant expression, so this one is a macro, as it
// is on Windows.
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(~std::uintptr_t{0}))

inline constexpr DWORD GENERIC_READ = 0x80000000;
inline constexpr DWORD GENERIC_WRITE = 0x40000000;
inline constexpr DWORD GENERIC_EXECUTE = 0x20000000;
inline constexpr DWORD GENERIC_ALL = 0x10000000;
inline constexpr DWORD FILE_READ_DATA = 0x0001;
inline constexpr DWORD FILE_WRITE_DATA = 0x0002;
inline constexpr DWORD FILE_APPEND_DATA = 0x0004;
inline constexpr DWORD FILE_EXECUTE = 0x0020;
inline constexpr DWORD DELETE = 0x00010000;
inline constexpr DWORD FILE_SHARE_READ = 1;
inline constexpr DWORD FILE_SHARE_WRITE = 2;
inline constexpr DWORD FILE_SHARE_DELETE = 4;
inline constexpr DWORD CREATE_NEW = 1;
inline constexpr DWORD CREATE_ALWAYS = 2;
inline constexpr DWORD OPEN_EXISTING = 3;
inline constexpr DWORD OPEN_ALWAYS = 4;
inline constexpr DWORD FILE_BEGIN = 0;
inline constexpr DWORD FILE_CURRENT = 1;
inline constexpr DWORD FILE_END = 2;
inline constexpr DWORD INVALID_SET_FILE_POINTER = 0xFFFFFFFF;

inline constexpr DWORD FILE_ATTRIBUTE_READONLY = 0x01;
inline constexpr DWORD FILE_ATTRIBUTE_HIDDEN = 0x02;
inline constexpr DWORD FILE_ATTRIBUTE_SYSTEM = 0x04;
inline constexpr DWORD FILE_ATTRIBUTE_DIRECTORY = 0x10;
inline constexpr DWORD FILE_ATTRIBUTE_ARCHIVE = 0x20;
inline constexpr DWORD FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr DWORD FILE_ATTRIBUTE_REPARSE_POINT = 0x400;
inline constexpr DWORD INVALID_FILE_ATTRIBUTES = 0xFFFFFFFF;

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_PATH_NOT_FOUND = 3;
inline constexpr DWORD ERROR_TOO_MANY_OPEN_FILES = 4;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_OUTOFMEMORY = 14;
inline constexpr DWORD ERROR_NOT_SAME_DEVICE = 17;
inline constexpr DWORD ERROR_NO_MORE_FILES = 18;
inline constexpr DWORD ERROR_WRITE_PROTECT = 19;
inline constexpr DWORD ERROR_CRC = 23;
inline constexpr DWORD ERROR_GEN_FAILURE = 31;
inline constexpr DWORD ERROR_SHARING_VIOLATION = 32;
inline constexpr DWORD ERROR_LOCK_VIOLATION = 33;
inline constexpr DWORD ERROR_HANDLE_EOF = 38;
inline constexpr DWORD ERROR_HANDLE_DISK_FULL = 39;
inline constexpr DWORD ERROR_NOT_SUPPORTED = 50;
inline constexpr DWORD ERROR_BAD_NETPATH = 53;
inline constexpr DWORD ERROR_FILE_EXISTS = 80;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_BUFFER_OVERFLOW = 111;
inline constexpr DWORD ERROR_DISK_FULL = 112;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_INVALID_NAME = 123;
inline constexpr DWORD ERROR_NEGATIVE_SEEK = 131;
inline constexpr DWORD ERROR_DIR_NOT_EMPTY = 145;
inline constexpr DWORD ERROR_ALREADY_EXISTS = 183;
inline constexpr DWORD ERROR_FILENAME_EXCED_RANGE = 206;
inline constexpr DWORD ERROR_DIRECTORY = 267;
inline constexpr DWORD ERROR_NO_UNICODE_TRANSLATION = 1113;
inline constexpr DWORD ERROR_REQUEST_ABORTED = 1235;
inline constexpr DWORD ERROR_RESOURCE_DATA_NOT_FOUND = 1812;
inline constexpr DWORD ERROR_RESOURCE_TYPE_NOT_FOUND = 1813;

inline constexpr DWORD DLL_PROCESS_DETACH = 0;
inline constexpr DWORD DLL_PROCESS_ATTACH = 1;
// The calling convention is the platform's only one.
#define WINAPI

inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_OEMCP = 1;
inline constexpr UINT CP_UTF8 = 65001;

struct SECURITY_ATTRIBUTES;

struct OVERLAPPED {
  std::uintptr_t Internal;
  std::uintptr_t InternalHigh;
  DWORD Offset;
  DWORD OffsetHigh;
  HANDLE hEvent;
};

union LARGE_INTEGER {
  LONGLONG QuadPart;
};

struct FILETIME {
  DWORD dwLowDateTime;
  DWORD dwHighDateTime;
};

struct SYSTEMTIME {
  WORD wYear;
  WORD wMonth;
  WORD wDayOfWeek;
  WORD wDay;
  WORD wHour;
  WORD wMinute;
  WORD wSecond;
  WORD wMilliseconds;
};

struct WIN32_FILE_ATTRIBUTE_DATA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
};

struct WIN32_FIND_DATAA {
  DWORD dwFileAttributes;
  FILETIME ftCreationTime;
  FILETIME ftLastAccessTime;
  FILETIME ftLastWriteTime;
  DWORD nFileSizeHigh;
  DWORD nFileSizeLow;
  DWORD dwReserved0;
  DWORD dwReserved1;
  char cFileName[MAX_PATH];
  char cAlternateFileName[14];
};

struct GUID {
  DWORD Data1;
  WORD Data2;
  WORD Data3;
  BYTE Data4[8];
};

enum GET_FILEEX_INFO_LEVELS { GetFileExInfoStandard };
enum FINDEX_INFO_LEVELS { FindExInfoStandard, FindExInfoBasic };
enum FINDEX_SEARCH_OPS { FindExSearchNameMatch, FindExSearchLimitToDirectories };
// A flag of FindFirstFileExA that only this layer has. If the folder's listing
// includes the type of an entry, its status is not read, and its record has only
// the name and FILE_ATTRIBUTE_DIRECTORY or FILE_ATTRIBUTE_ARCHIVE.
inline constexpr DWORD FIND_NAMES_ONLY = 0x10000;

inline constexpr DWORD DDD_RAW_TARGET_PATH = 1;
inline constexpr DWORD DDD_REMOVE_DEFINITION = 2;

// Errors, of the calling thread.
DWORD GetLastError();
void SetLastError(DWORD error);

// Drives and shares. `device` is a drive (`T:`) or a share (`UNC\srv\share`),
// `target` a folder, as a native path or as a path text, with or without the
// prefix `\??\`. The mapping belongs to the process. Exported by the library,
// so that hosts can map.
extern "C" __attribute__((visibility("default"))) BOOL DefineDosDeviceA(DWORD flags,
                                                                        const char* device,
                                                                        const char* target);

// Open files. A closed handle fails with ERROR_INVALID_HANDLE for good. Share
// modes hold between all openings through this layer, in any process, where the
// file system has locks. Folders, FIFOs, sockets and devices but NUL are not opened
// and fail with ERROR_ACCESS_DENIED. Of the access rights, generic ones, DELETE, and
// those to read, write, append to and execute the data count; a file need not be
// executable to be opened for execution.
HANDLE CreateFileA(const char* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                   DWORD disposition, DWORD attributes, HANDLE templateFile);
BOOL CloseHandle(HANDLE handle);
// With `overlapped`, reads or writes at its offset, synchronously; the position
// of the handle is then unspecified. A read at the end of the file succeeds
// with 0 bytes, with `overlapped` too (on Windows it fails with
// ERROR_HANDLE_EOF there).
BOOL ReadFile(HANDLE handle, void* buffer, DWORD size, DWORD* read, OVERLAPPED* overlapped);
BOOL WriteFile(HANDLE handle, const void* data, DWORD size, DWORD* written, OVERLAPPED* overlapped);
BOOL FlushFileBuffers(HANDLE handle);
DWORD SetFilePointer(HANDLE handle, LONG distance, LONG* distanceHigh, DWORD method);
BOOL SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method);
BOOL GetFileSizeEx(HANDLE handle, LARGE_INTEGER* size);
BOOL SetEndOfFile(HANDLE handle);

// Names on disk.
DWORD GetFileAttributesA(const char* path);
BOOL GetFileAttributesExA(const char* path, GET_FILEEX_INFO_LEVELS level, void* data);
BOOL SetFileAttributesA(const char* path, DWORD attributes);
BOOL DeleteFileA(const char* path);
BOOL CopyFileA(const char* source, const char* target, BOOL failIfExists);
BOOL CreateDirectoryA(const char* path, SECURITY_ATTRIBUTES* security);
BOOL RemoveDirectoryA(const char* path);
DWORD GetTempPathA(DWORD size, char* buffer);
UINT GetTempFileNameA(const char* folder, const char* prefix, UINT unique, char* buffer);
DWORD SearchPathA(const char* path, const char* name, const char* extension, DWORD size,
                  char* buffer, char** filePart);

// Searches.
HANDLE FindFirstFileA(const char* pattern, WIN32_FIND_DATAA* data);
HANDLE FindFirstFileExA(const char* pattern, FINDEX_INFO_LEVELS level, void* data,
                        FINDEX_SEARCH_OPS operation, void* filter, DWORD flags);
BOOL FindNextFileA(HANDLE search, WIN32_FIND_DATAA* data);
BOOL FindClose(HANDLE search);

// Text and code pages. lstrcmpiA compares characters without regard to letter case (foldCase), so
// that its result depends on no locale.
int lstrcmpiA(const char* first, const char* second);
BOOL IsDBCSLeadByte(BYTE byte);
UINT GetOEMCP();
// Ill-formed bytes become U+DC80 to U+DCFF and come back as they were.
int MultiByteToWideChar(UINT codePage, DWORD flags, const char* text, int length, WCHAR* buffer,
                        int size);
int WideCharToMultiByte(UINT codePage, DWORD flags, const WCHAR* text, int length, char* buffer,
                        int size, const char* defaultCharacter, BOOL* usedDefault);

// Times.
void GetSystemTime(SYSTEMTIME* time);
void GetLocalTime(SYSTEMTIME* time);
BOOL FileTimeToLocalFileTime(const FILETIME* utc, FILETIME* local);
BOOL FileTimeToSystemTime(const FILETIME* time, SYSTEMTIME* parts);
int SystemTimeToVariantTime(SYSTEMTIME* parts, double* date);
int VariantTimeToSystemTime(double date, SYSTEMTIME* parts);

// Process and identity.
DWORD GetCurrentProcessId();
// Notices of threads are never delivered here, so that there is nothing to do.
BOOL DisableThreadLibraryCalls(HMODULE module);
HRESULT CoCreateGuid(GUID* guid);

// Version resources of files in the PE format.
DWORD GetFileVersionInfoSizeA(const char* path, DWORD* handle);
BOOL GetFileVersionInfoA(const char* path, DWORD handle, DWORD size, void* data);
BOOL VerQueryValueA(const void* data, const char* subBlock, void** value, UINT* length);
