// Recognising the format of a sequence file from its first line and the
// extension of its path.
#pragma once

#include <string_view>

namespace varnoth::input {

enum class InputFormat {
  None,
  Pir,
  Mega,
  Gde,
  Clustal,
  Msf,
  Lwl,
  PhylipFree,   // counts read from line 1
  PhylipFixed,  // counts left from the previous file
};

// The format label shown in the report ("" for None).
std::string_view format_label(InputFormat format);

// The path's part behind its last "\" or "/".
std::string_view file_name_of(std::string_view path);

// The text behind the first "." of the whole path ("" without a "."): a
// directory with a point in its name gives a wrong extension, deliberately.
std::string_view path_extension(std::string_view path);

// The tests on line 1, in order; the first that holds decides.
InputFormat detect_format(std::string_view line1, std::string_view extension);

}  // namespace varnoth::input
