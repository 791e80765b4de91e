// What a glTF document may ask for.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mapexport {

/// A few bytes of a document can name its data over and over. So what is made of it is held against
/// its size; every sum has room for what programs write. Throws SceneError with the place that asks
/// for too much.
class GltfBudget {
 public:
  /// `path` must outlive this object.
  explicit GltfBudget(const std::string& path) : path_(path) {}

  /// Bytes of the document and its buffers.
  void AddFile(std::size_t bytes) { fileBytes_ += bytes; }
  /// Bytes that decompression makes.
  void AddDecoded(std::size_t bytes) { decodedBytes_ += bytes; }

  /// Compressed bytes that are decoded: each one once.
  void TakeCompressed(std::size_t bytes, const std::string& place);
  /// Values that are read, or that something is made of.
  void TakeValues(std::size_t count, const std::string& place);
  /// Values without data in the file, which are read at one time.
  void CheckZeros(std::size_t count, const std::string& place) const;
  /// Nodes that are made beyond those of the document.
  void TakeNodes(std::size_t count, const std::string& place);
  /// Bytes of names, keywords and messages.
  void TakeText(std::size_t bytes, const std::string& place);

  /// How many values may be kept for their next use.
  std::size_t MostKept() const;

 private:
  std::size_t Bytes() const { return fileBytes_ + decodedBytes_; }
  /// Throws unless `sum` is at most `most`.
  void Check(std::size_t sum, std::size_t most, std::string_view what,
             const std::string& place) const;

  const std::string& path_;
  std::size_t fileBytes_ = 0;
  std::size_t decodedBytes_ = 0;
  std::size_t compressed_ = 0;
  std::size_t values_ = 0;
  std::size_t nodes_ = 0;
  std::size_t text_ = 0;
};

}  // namespace mapexport
