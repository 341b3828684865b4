// How the command line asks the system for memory.
#pragma once

namespace varnoth::cli {

// Lets the heap grow in large steps backed by huge pages where the system
// offers them (Linux with glibc), so that a run's first touches of fresh
// memory cost a few large page faults rather than thousands of small ones.
// A hint only: elsewhere, or where the system refuses, nothing changes.
void prepare_memory();

}  // namespace varnoth::cli
