#include "app/Sha256.h"

#include <array>
#include <cerrno>

#include <fmt/format.h>
#include <sha2.h>

#include "app/RunError.h"

namespace mapexport {

std::string Sha256OfFile(const std::string& path) {
  std::array<char, SHA256_DIGEST_STRING_LENGTH> digits;
  if (SHA256File(path.c_str(), digits.data()) == nullptr) {
    throw RunError(fmt::format("{}: cannot be read: {}", path, ErrnoText(errno)));
  }
  return digits.data();
}

}  // namespace mapexport
