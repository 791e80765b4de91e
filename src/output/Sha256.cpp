#include "output/Sha256.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <vector>

#include <fmt/format.h>
#include <nettle/sha2.h>
#include <sys/stat.h>

#include "system/Descriptor.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

constexpr std::size_t kBlock = 65536;

[[noreturn]] void FailToRead(const std::string& path) {
  throw RunError(fmt::format("{}: cannot be read: {}", path, ErrnoText(errno)));
}

/// Others may never end.
void RequireRegularFile(const Descriptor& file, const std::string& path) {
  struct stat status {};
  if (fstat(file.Get(), &status) != 0) FailToRead(path);
  if (!S_ISREG(status.st_mode)) throw RunError(path + ": is not a regular file");
}

}  // namespace

std::string Sha256OfFile(const std::string& path) {
  const Descriptor file = OpenToRead(path);
  if (!file.IsOpen()) FailToRead(path);
  RequireRegularFile(file, path);
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
