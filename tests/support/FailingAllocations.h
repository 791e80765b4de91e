// Lets allocations of a test program fail. To be included by the program's one source file.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

namespace mapexport::failing_allocations {

inline int left = -1;          ///< allocations until one fails; -1: none does
inline bool laterToo = false;  ///< that one and all that follow
inline bool anyFailed = false;

}  // namespace mapexport::failing_allocations

// NOLINTBEGIN(misc-definitions-in-headers): one source file includes them.
// Inlined, these would make g++ 12 take each new and delete for a mismatched pair.
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  using namespace mapexport::failing_allocations;
  const bool fails = left == 0;
  anyFailed |= fails;
  if (left > 0 || (fails && !laterToo)) --left;
  return fails ? nullptr : std::malloc(size);
}
[[gnu::noinline]] void* operator new(std::size_t size) {
  void* const memory = operator new(size, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}
// NOLINTEND(misc-definitions-in-headers)
