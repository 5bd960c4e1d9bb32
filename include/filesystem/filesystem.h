#pragma once
/// @file
/// Includes everything that the library exports.
///
/// @code
/// #include <filesystem/filesystem.h>
/// @endcode

#include <filesystem/access.h>
#include <filesystem/archive.h>
#include <filesystem/archive_change.h>
#include <filesystem/enumeration.h>
#include <filesystem/file_information.h>
#include <filesystem/file_stream.h>
#include <filesystem/files.h>
#include <filesystem/frame.h>
#include <filesystem/options.h>
#include <filesystem/path.h>
#include <filesystem/results.h>
#include <filesystem/stream.h>
#include <filesystem/temporary_storage.h>
#include <filesystem/trees.h>
#include <filesystem/xml.h>
#include <filesystem/zip.h>
#include <filesystem/zip_archive.h>
