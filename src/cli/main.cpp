#include "cli/commands.h"

int main(int argc, char** argv) { return varnoth::cli::run(argc, argv); }
