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
  constexpr std::uintptr_t kPage = 4096;
  // The heap grows 64 MB at a time and is not given back piecemeal.
  if (mallopt(M_TOP_PAD, static_cast<int>(kStep)) == 0) return;
  mallopt(M_TRIM_THRESHOLD, static_cast<int>(2 * kStep));
  // Blocks up to half a step come from the heap too, not from fresh mappings
  // of their own.
  mallopt(M_MMAP_THRESHOLD, static_cast<int>(kStep / 2));
  // The heap's next stretch is made to start one small page below a
  // huge-page boundary, so that the header of its first block lies below it.
  const auto brk_now = reinterpret_cast<std::uintptr_t>(sbrk(0));
  const std::uintptr_t start = ((brk_now + kPage + kHuge - 1) & ~(kHuge - 1)) - kPage;
  if (sbrk(static_cast<std::intptr_t>(start - brk_now)) == reinterpret_cast<void*>(-1)) return;
  // One block from the heap makes it grow now. Freed, the whole stretch above
  // the boundary is free memory again, which is marked for huge pages; the
  // small page the growth wrote a header into is given back, or that huge
  // page could never be had.
  void* probe = std::malloc(kStep / 4);
  if (probe == nullptr) return;
  std::free(probe);
  const std::uintptr_t begin = start + kPage;
  const auto end = reinterpret_cast<std::uintptr_t>(sbrk(0)) & ~(kHuge - 1);
  if (end <= begin) return;
  if (madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE) != 0) return;
  madvise(reinterpret_cast<void*>(begin), end - begin, MADV_DONTNEED);
#endif
}

}  // namespace varnoth::cli
