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
  Fasta,        // aligned FASTA, recognised by its extension as well
};

// The format label shown in the report ("" for None).
std::string_view format_label(InputFormat format);

// The path's part behind its last "\" or "/".
std::string_view file_name_of(std::string_view path);

// The text behind the first "." of the whole path ("" without a "."): a
// directory with a point in its name gives a wrong extension, deliberately.
std::string_view path_extension(std::string_view path);

// Whether the file name's own extension (behind the last "." of the file name,
// found within `extension`) is one of the FASTA ones, in any case: fa, fasta,
// fas, fna, ffn, mfa, afa.
bool is_fasta_extension(std::string_view extension);

// The tests on line 1, in order; the first that holds decides. A ">" line of a
// file with a FASTA extension is FASTA; every other file is judged by the tests
// of the seven formats alone.
InputFormat detect_format(std::string_view line1, std::string_view extension);

// The format a user names (gde, lwl, mega, pir, clustal, msf, phylip, fasta) to
// read a file as, whatever its first line and extension; None for other names.
// PHYLIP named so reads its counts from line 1.
InputFormat format_by_name(std::string_view name);

}  // namespace varnoth::input
