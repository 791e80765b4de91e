// The library's access to files, with a record of them.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace Assimp {
class IOSystem;
}

namespace mapexport {

/// The files that a reader asked for, by the names that it used, each once, in the order of asking.
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

/// A file that is read in another form than the one it has.
struct ChangedFile {
  std::string name;
  std::string text;
};

/// File access that also finds names with URIs' percent signs or Windows' separators, and notes in
/// `record` each file that is opened, or can't be. It opens regular files, and for reading alone.
/// Opening changed->name gives changed->text, when there is one.
std::unique_ptr<Assimp::IOSystem> MakeRecordingFiles(std::shared_ptr<FileRecord> record,
                                                     std::shared_ptr<const ChangedFile> changed);

}  // namespace mapexport
