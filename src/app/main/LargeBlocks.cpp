// Memory for the program and its libraries: large blocks ask for large pages. A scene of a million
// triangles touches 80,000 small pages for the first time, and that alone is a fifth of an export.
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include <sys/mman.h>

// Sanitizers have operators that find more.
#if defined(__SANITIZE_ADDRESS__)
#define MAPEXPORT_OWN_OPERATORS 0
#elif defined(__has_feature)
#define MAPEXPORT_OWN_OPERATORS !__has_feature(address_sanitizer)
#else
#define MAPEXPORT_OWN_OPERATORS 1
#endif

#if MAPEXPORT_OWN_OPERATORS

namespace {

// The size of a large page on most systems. The last, partly used large page of a block counts in
// full.
constexpr std::size_t kLarge = std::size_t{2} << 20;

void* Allocate(std::size_t size) {
  if (size < kLarge || size > PTRDIFF_MAX) return std::malloc(size == 0 ? 1 : size);
  // Aligned to the page size: the part before the first boundary would be on small pages.
  const std::size_t whole = (size + kLarge - 1) / kLarge * kLarge;
  void* const block = std::aligned_alloc(kLarge, whole);
  if (block != nullptr) {
    const int before = errno;
    // A kernel without large pages refuses this, which does no harm.
    static_cast<void>(madvise(block, whole, MADV_HUGEPAGE));
    errno = before;
  }
  return block;
}

}  // namespace

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
