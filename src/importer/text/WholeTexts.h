// Reads whole the user property texts that the import library cuts.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace mapexport {

struct LibraryScene;

/// The long user property texts of an FBX file. The library's texts hold 1,023 bytes.
class WholeTexts {
 public:
  /// `source` must outlive this object. The file is read again when it is first asked for.
  explicit WholeTexts(const LibraryScene& source) : source_(source) {}

  /// The text of the node `nodeName` that begins with `cut`, the part that the library has, as
  /// bytes of the file; empty when the file has none, or several different ones.
  std::optional<std::string> Find(const std::string& nodeName, std::string_view cut);

 private:
  void Read();
  void ReadFbx(std::string_view file);
  void Add(const std::string& nodeName, std::string_view text);

  const LibraryScene& source_;
  bool isRead_ = false;
  /// By the node's name and the library's part of the text; empty when several texts match.
  std::unordered_map<std::string, std::optional<std::string>> texts_;
};

}  // namespace mapexport
