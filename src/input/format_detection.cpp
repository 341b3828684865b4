#include "input/format_detection.h"

#include <string>

#include "input/line_list.h"
#include "text/number_reading.h"

namespace varnoth::input {

std::string_view format_label(InputFormat format) {
  switch (format) {
    case InputFormat::Pir: return "NBRF/PIR";
    case InputFormat::Mega: return "MEGA";
    case InputFormat::Gde: return "GDE";
    case InputFormat::Clustal: return "CLUSTAL";
    case InputFormat::Msf: return "MSF";
    case InputFormat::Lwl: return "LWL (91) / Text";
    case InputFormat::PhylipFree:
    case InputFormat::PhylipFixed: return "PHYLIP";
    case InputFormat::Fasta: return "FASTA";
    case InputFormat::None: break;
  }
  return "";
}

std::string_view file_name_of(std::string_view path) {
  size_t cut = path.find_last_of("\\/");
  return cut == std::string_view::npos ? path : path.substr(cut + 1);
}

std::string_view path_extension(std::string_view path) {
  size_t dot = path.find('.');
  return dot == std::string_view::npos ? std::string_view{} : path.substr(dot + 1);
}

namespace {

std::string upper(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return out;
}

}  // namespace

bool is_fasta_extension(std::string_view extension) {
  const size_t dot = extension.rfind('.');
  const std::string_view own =
      dot == std::string_view::npos ? extension : extension.substr(dot + 1);
  if (own.find_first_of("\\/") != std::string_view::npos) return false;  // no "." in the file name
  const std::string name = upper(own);
  for (const char* known : {"FA", "FASTA", "FAS", "FNA", "FFN", "MFA", "AFA"})
    if (name == known) return true;
  return false;
}

InputFormat detect_format(std::string_view line1, std::string_view extension) {
  if (columns(line1, 1, 4) == ">DL;") return InputFormat::Pir;
  if (columns(line1, 1, 1) == ">" && is_fasta_extension(extension)) return InputFormat::Fasta;
  if (columns(line1, 1, 4) == "#MEG" || columns(line1, 1, 4) == "#meg") return InputFormat::Mega;
  if (columns(line1, 1, 1) == "#") return InputFormat::Gde;
  if (columns(line1, 1, 7) == "CLUSTAL") return InputFormat::Clustal;
  if (upper(columns(line1, 1, 6)) == "PILEUP" || upper(columns(line1, 1, 7)) == "   MSF:")
    return InputFormat::Msf;
  // "Phy" keeps a file out of the LWL test but is not admitted as PHYLIP
  // below; the asymmetry is deliberate.
  double length = text::read_number(columns(line1, 1, 4));
  if (length >= 1 && length <= 9999 && columns(line1, 6, 1) == " " && extension != "phy" &&
      extension != "PHY" && extension != "Phy")
    return InputFormat::Lwl;
  if (extension == "PHY" || extension == "phy") return InputFormat::PhylipFree;
  double digit = text::read_number(columns(line1, 6, 1));
  double width = text::read_number(columns(line1, 9, 5));
  if (digit >= 0 && digit <= 9 && width > 10 && width < 99999) return InputFormat::PhylipFixed;
  return InputFormat::None;
}

InputFormat format_by_name(std::string_view name) {
  struct Named {
    std::string_view name;
    InputFormat format;
  };
  static constexpr Named kNamed[] = {
      {"gde", InputFormat::Gde},         {"lwl", InputFormat::Lwl},
      {"mega", InputFormat::Mega},       {"pir", InputFormat::Pir},
      {"clustal", InputFormat::Clustal}, {"msf", InputFormat::Msf},
      {"phylip", InputFormat::PhylipFree}, {"fasta", InputFormat::Fasta}};
  for (const Named& n : kNamed)
    if (n.name == name) return n.format;
  return InputFormat::None;
}

}  // namespace varnoth::input
