#include "app/RunError.h"

#include <system_error>

namespace mapexport {

std::string ErrnoText(int error) {
  return std::generic_category().message(error);
}

}  // namespace mapexport
