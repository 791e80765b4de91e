#include "app/main/LargeBlocks.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

// Sanitizers have operators that find more.
#ifdef MAPEXPORT_SHADOW_MEMORY

namespace mapexport {

void PutHeapOnLargePages() {}

}  // namespace mapexport

#else

namespace {

// The size of a large page on most systems. The last, partly used large page of a block counts in
// full.
constexpr std::size_t kLarge = std::size_t{2} << 20;

/// A kernel without large pages refuses this, which does no harm.
void AskForLargePages(std::byte* begin, std::byte* end) {
  const int before = errno;
  static_cast<void>(madvise(begin, static_cast<std::size_t>(end - begin), MADV_HUGEPAGE));
  errno = before;
}

void* Allocate(std::size_t size) {
  if (size < kLarge || size > PTRDIFF_MAX) return std::malloc(size == 0 ? 1 : size);
  // Aligned to the page size: the part before the first boundary would be on small pages.
  const std::size_t whole = (size + kLarge - 1) / kLarge * kLarge;
  void* const block = std::aligned_alloc(kLarge, whole);
  if (block != nullptr) {
    AskForLargePages(static_cast<std::byte*>(block), static_cast<std::byte*>(block) + whole);
  }
  return block;
}

}  // namespace

namespace mapexport {

void PutHeapOnLargePages() {
  constexpr int kReserve = 32 << 20;
  mallopt(M_MMAP_THRESHOLD, static_cast<int>(kLarge));  // Allocate has the larger blocks
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  mallopt(M_TOP_PAD, kReserve);
  // The heap is extended by the reserve for a block that does not fit into it.
  std::byte* const former = static_cast<std::byte*>(sbrk(0));
  void* volatile block = std::malloc(kLarge / 2);  // volatile: else the pair may be left out
  std::free(block);
  std::byte* const end = static_cast<std::byte*>(sbrk(0));
  if (end > former) AskForLargePages(former, end);
}

}  // namespace mapexport

// The other forms of the operators call these. The aligned ones are left as they are; their blocks,
// too, end in free().

void* operator new(std::size_t size) {
  while (true) {
    if (void* const block = Allocate(size)) return block;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}

void operator delete(void* block) noexcept {
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
  std::free(block);
}

#endif
