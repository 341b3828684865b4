#include "cli/commands.h"

#include <iostream>

#include <CLI/CLI.hpp>

namespace varnoth::cli {

int run(int argc, char** argv) { return run(argc, argv, std::cout, std::cerr); }

int run(int argc, char** argv, std::ostream& out, std::ostream& err) {
  CLI::App app{"Varnoth: divergence of aligned nucleotide sequences", "varnoth"};
  app.set_version_flag("--version", std::string("varnoth ") + VARNOTH_VERSION);
  app.require_subcommand(1);
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) {
      out << (e.get_name() == "CallForVersion" ? e.what() : app.help()) << "\n";
      return 0;
    }
    err << e.what() << "\n" << "Run with --help for more information.\n";
    return 2;
  }
  return 0;
}

}  // namespace varnoth::cli
