// What a child process hands over to its parent, which treats it as untrusted.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "system/Descriptor.h"
#include "worker/ConfineReader.h"

namespace mapexport {

/// The most bytes of a message. An error's text is cut at some 8 KiB.
inline constexpr std::uint64_t kLongestMessage = std::uint64_t{64} << 20;

/// A child can't be started or can't hand over its result; what() says why.
class ChildError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The memory files that a child gets from its parent and fills. The functions that write run in
/// the child and throw ChildError; those that read run in the parent after the child has ended.
class HandOverFiles {
 public:
  /// A confined child records its confinement first, and can't make the message longer than
  /// allowed. Throws ChildError.
  explicit HandOverFiles(bool confined);

  std::vector<int> Numbers() const;
  const Descriptor& Output() const { return output_; }
  /// From then on nobody can change the output. For the parent.
  void SealOutput() const;
  Descriptor TakeOutput() { return std::move(output_); }

  /// From then on nobody can change the record.
  void WriteConfinement(const Confinement& confinement) const;
  void WriteMessage(std::string_view message) const;

  /// Empty when it can't be read.
  std::string ReadMessage(std::uint64_t most = kLongestMessage) const;
  /// The message as the text of an error, cut when it is too long.
  std::string ReadError() const;
  /// Nothing unless it was written.
  std::optional<Confinement> ReadConfinement() const;

 private:
  Descriptor confinement_;
  Descriptor output_;
  Descriptor message_;  ///< the end of the message is its position, which both processes share
};

/// At most that many bytes of a file, from `at` on; fewer at its end or when it can't be read.
std::string BytesOf(const Descriptor& file, std::uint64_t at, std::uint64_t most);

/// Append a value to a message.
void PutNumber(std::string& bytes, std::uint64_t number);
void PutText(std::string& bytes, std::string_view text);

/// A message that this program did not write.
class BadMessage : public std::runtime_error {
 public:
  BadMessage() : std::runtime_error("its message is damaged") {}
};

/// Removes values from the front of a message, which must outlive this. Throws BadMessage at its
/// end.
class MessageParts {
 public:
  explicit MessageParts(std::string_view bytes) : rest_(bytes) {}

  std::uint64_t Number();
  std::string Text();
  /// Throws BadMessage unless everything was removed.
  void RequireEnd() const;

 private:
  std::string_view Take(std::uint64_t size);

  std::string_view rest_;
};

}  // namespace mapexport
