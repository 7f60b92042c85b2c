// Names of files: a name is a plain byte string, with "/" or "\" between its parts.
#pragma once

#include <string_view>

namespace qnpp {

/// True for a name of more than one character that begins with "/", or with a letter and ":".
bool isAbsoluteName(std::string_view name);

/// The directory part of a path: "a" for "a/b" and "a/b/" alike, "/" for "/b", "." where there is no separator. A part
/// of `path`, or lasting.
std::string_view directoryOf(std::string_view path);

}  // namespace qnpp
