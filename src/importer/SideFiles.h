// File access for the import library, which records the files.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Assimp {
class IOSystem;
}

namespace mapexport {

/// The files that a reader asked for, by the names that it used, each once, in order.
class FileRecord {
 public:
  void Add(const std::string& name, bool isOpened);
  const std::vector<std::string>& Opened() const { return opened_; }
  const std::vector<std::string>& Missing() const { return missing_; }

 private:
  std::vector<std::string> opened_;
  std::vector<std::string> missing_;
  std::set<std::string> known_;
};

/// A text that is read in place of a file.
struct ChangedFile {
  std::string name;
  std::string text;
};

/// File access that also finds names with the percent signs of URIs or the separators of Windows,
/// and records in `record` each file that is opened or can't be. It opens regular files only, and
/// for reading only. Opening changed->name gives changed->text, unless `changed` is null.
std::unique_ptr<Assimp::IOSystem> MakeRecordingFiles(std::shared_ptr<FileRecord> record,
                                                     std::shared_ptr<const ChangedFile> changed);

}  // namespace mapexport
