#include "output/Sha256.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <vector>

#include <fcntl.h>
#include <fmt/format.h>
#include <nettle/sha2.h>

#include "system/Descriptor.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

constexpr std::size_t kBlock = 65536;

[[noreturn]] void FailToRead(const std::string& path) {
  throw RunError(fmt::format("{}: cannot be read: {}", path, ErrnoText(errno)));
}

}  // namespace

std::string Sha256OfFile(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (!file.IsOpen()) FailToRead(path);
  sha256_ctx context;
  sha256_init(&context);
  std::vector<std::uint8_t> block(kBlock);
  for (std::size_t count = kBlock; count == kBlock;) {
    const ssize_t got = ReadUpTo(file.Get(), block.data(), block.size());
    if (got < 0) FailToRead(path);
    count = static_cast<std::size_t>(got);
    sha256_update(&context, count, block.data());
  }
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest;
  sha256_digest(&context, digest.size(), digest.data());
  return fmt::format("{:02x}", fmt::join(digest, ""));
}

}  // namespace mapexport
