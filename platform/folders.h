#pragma once

#include <string>

namespace opane {

/// The full path of the file that holds this very code: the library's, or the program's where the library is part of
/// it. UTF-8.
std::string libraryFile();

/// The folder of that file, without a separator at its end. UTF-8.
std::string libraryFolder();

/// The folder of the data files that come with the library, such as the default character generator: what the
/// environment variable OPANE_DATA names, else share/opane beside the library or under its prefix. Without a separator
/// at its end; empty when there is none.
std::string dataFolder();

}  // namespace opane
