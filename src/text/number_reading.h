// Reading numbers from text typed by the user or read from a file.
#pragma once

#include <string_view>

namespace varnoth::text {

// The plain reader: the leading number of a text (blanks and tabs before it are
// skipped), "." as the only decimal point, an optional exponent; reading stops at
// the first character that is no part of the number. Text gives 0.
double read_number(std::string_view text);

// The reader for a field that holds a comma: the comma is the decimal separator
// (the convention of the locales that write one), "." groups thousands.
double read_comma_number(std::string_view text);

// A field typed by the user: the comma reader where the text holds a comma,
// else the plain reader.
double read_field(std::string_view text);

}  // namespace varnoth::text
