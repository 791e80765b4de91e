#include "system/RunError.h"

#include <new>
#include <system_error>

namespace mapexport {

std::string ReasonOf(const std::exception& error) {
  return dynamic_cast<const std::bad_alloc*>(&error) != nullptr ? "memory ran out" : error.what();
}

std::string ErrnoText(int error) {
  return std::generic_category().message(error);
}

}  // namespace mapexport
