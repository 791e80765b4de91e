// What a child process hands over to its parent, which does not trust it.
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

/// Bytes of a message. Of an error's text some 8 KiB are taken over.
inline constexpr std::uint64_t kLongestMessage = std::uint64_t{64} << 20;

/// A child can't be had, or what it has can't be handed over; what() says why.
class ChildError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The files in memory that a child fills, which it has from its parent. Those that write run in
/// the child, and throw ChildError; those that read run in the parent when the child has ended.
class HandOverFiles {
 public:
  /// A child that is confined says so first, and can't make the message longer than it may be.
  /// Throws ChildError.
  explicit HandOverFiles(bool confined);

  std::vector<int> Numbers() const;
  const Descriptor& Output() const { return output_; }
  Descriptor TakeOutput() { return std::move(output_); }

  /// From then on nobody can change what it says.
  void WriteConfinement(const Confinement& confinement) const;
  void WriteMessage(std::string_view message) const;

  /// Empty when it can't be read.
  std::string ReadMessage(std::uint64_t most = kLongestMessage) const;
  /// The message as the text of an error; what is too long is cut.
  std::string ReadError() const;
  /// None unless it was written.
  std::optional<Confinement> ReadConfinement() const;

 private:
  Descriptor confinement_;
  Descriptor output_;
  Descriptor message_;  ///< its position, which both processes share, is where the message ends
};

/// At most that many bytes of a file, from `at` on; fewer where it ends or can't be read.
std::string BytesOf(const Descriptor& file, std::uint64_t at, std::uint64_t most);

/// Append a value to a message.
void PutNumber(std::string& bytes, std::uint64_t number);
void PutText(std::string& bytes, std::string_view text);

/// A message is not what this program puts together.
class BadMessage : public std::runtime_error {
 public:
  BadMessage() : std::runtime_error("its message is damaged") {}
};

/// Takes the values off the front of a message, which must stay. Throws BadMessage where it ends.
class MessageParts {
 public:
  explicit MessageParts(std::string_view bytes) : rest_(bytes) {}

  std::uint64_t Number();
  std::string Text();
  /// Throws BadMessage unless all was taken.
  void RequireEnd() const;

 private:
  std::string_view Take(std::uint64_t size);

  std::string_view rest_;
};

}  // namespace mapexport
