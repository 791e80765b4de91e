// The texts of scene files, and what reading them gives.
#pragma once

#include "scene/SceneError.h"
#include "scene/SceneFile.h"
#include "support/Testing.h"

namespace mapexport {

class ScratchFile {
 public:
  explicit ScratchFile(const std::string& text) { mapexport::Write(Path(), text); }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  ~ScratchFile() {
    fs::remove(Path());
  }  // file systems write what is truncated to the disk at once
  static std::string Path() {
    static const TempFolder folder;
    return folder.Path() / "a.scene.json";
  }
};

inline Scene Read(const std::string& text) {
  return ReadSceneFile(ScratchFile(text).Path());
}

// The message without the file's name, which must be in front; empty when the text can be read.
inline std::string DefectOf(const std::string& text, std::uint64_t mostItems = UINT64_MAX) {
  const ScratchFile file(text);
  try {
    ReadSceneFile(file.Path(), {.mostItems = mostItems});
  } catch (const SceneError& error) {
    const std::string message = error.what();
    EXPECT_TRUE(message.starts_with(file.Path() + ": ")) << message;
    EXPECT_EQ(message.find('\n'), std::string::npos) << message;
    return message.substr(file.Path().size() + 2);
  }
  return "";
}

inline std::string Write(const Scene& scene) {
  std::ostringstream out;
  WriteSceneFile(scene, out);
  return out.str();
}

// Documents with something in one place and nothing else.
inline std::string Document(const std::string& members) {
  return R"({"format": "mapexport-scene", "version": 1, )" + members + "}";
}
inline std::string Root(const std::string& members) {
  return Document(R"("root": {)" + members + "}");
}
inline std::string OfMesh(const std::string& members) {
  return Root(R"("mesh": {)" + members + "}");
}
inline std::string Material(const std::string& members) {
  return Document(R"("root": {}, "materials": [{)" + members + "}]");
}
inline std::string Repeat(const std::string& text, int count) {
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}
inline std::string Nested(int levels) {
  return Root(Repeat(R"("children": [{)", levels - 1) + Repeat("}]", levels - 1));
}

}  // namespace mapexport
