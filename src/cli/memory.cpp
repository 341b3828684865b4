#include "cli/memory.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#if defined(__linux__) && defined(__GLIBC__)
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace varnoth::cli {

void prepare_memory() {
#if defined(__linux__) && defined(__GLIBC__) && defined(MADV_HUGEPAGE)
  constexpr std::size_t kStep = std::size_t{64} << 20;
  constexpr std::uintptr_t kHuge = std::uintptr_t{2} << 20;
  // The heap grows 64 MB at a time and is not given back piecemeal.
  if (mallopt(M_TOP_PAD, static_cast<int>(kStep)) == 0) return;
  mallopt(M_TRIM_THRESHOLD, static_cast<int>(2 * kStep));
  // Blocks up to half a step come from the heap too, not from fresh mappings
  // of their own.
  mallopt(M_MMAP_THRESHOLD, static_cast<int>(kStep / 2));
  // One block from the heap makes it grow now; the whole stretch behind it is
  // then marked for huge pages.
  void* probe = std::malloc(64 << 10);
  if (probe == nullptr) return;
  const auto begin = (reinterpret_cast<std::uintptr_t>(probe) + kHuge - 1) & ~(kHuge - 1);
  const auto end = reinterpret_cast<std::uintptr_t>(sbrk(0)) & ~(kHuge - 1);
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
  std::free(probe);
#endif
}

}  // namespace varnoth::cli
