#include "cli/commands.h"
#include "cli/memory.h"

int main(int argc, char** argv) {
  varnoth::cli::prepare_memory();
  return varnoth::cli::run(argc, argv);
}
