#include "app/LoadScene.h"

#include <utility>

#include <fmt/format.h>

#include "importer/SourceFile.h"
#include "scene/NearKeywords.h"
#include "scene/SceneFile.h"
#include "worker/ReadForeignScene.h"

namespace mapexport {
namespace {

/// What a reader that was taken over could have done, for the most serious missing part.
const char* StateOf(const Confinement& confinement) {
  if (!confinement.calls.empty()) {
    return confinement.files.empty() ? "was only kept from writing files" : "was not confined";
  }
  if (!confinement.files.empty()) return "was not kept from looking into other processes";
  if (!confinement.limits.empty()) return "was not limited";
  return confinement.timer.value_or("").empty() ? "kept root's rights"
                                                : "might not have ended at its limits";
}

void WarnOfConfinement(const Confinement& confinement, const std::string& path,
                       Messages& messages) {
  std::string lacks;
  const auto add = [&lacks](const char* part, const std::string& lack) {
    if (!lack.empty()) lacks += fmt::format("{}{}: {}", lacks.empty() ? "" : "; ", part, lack);
  };
  add("no filter of system calls", confinement.calls);
  add("no Landlock", confinement.files);
  add("capabilities", confinement.capabilities);
  add("limits", confinement.limits);
  add("no timer", confinement.timer.value_or(""));
  if (lacks.empty()) return;
  messages.Warning("reader-not-confined", fmt::format("{}: was read by a process that {}: {}", path,
                                                      StateOf(confinement), lacks));
}

}  // namespace

LoadedScene LoadScene(const SceneSource& source, Messages& messages, Stages& stages) {
  const auto begin = [&stages](const char* stage) { stages.Begin(stage); };
  // Piped input has no extension, so it is a scene file.
  if (IsSceneFile(source.path) || source.path == "/dev/stdin") {
    begin("reading");
    if (source.import.up != UpAxis::kAuto || source.import.scale || source.import.skipHidden) {
      messages.Warning("option-without-effect",
                       fmt::format("{}: --up, --scale and --hidden have no effect: a scene file "
                                   "holds the scene as the exporter sees it",
                                   source.path));
    }
    LoadedScene loaded{ReadSceneFile(source.path), {}, {}, {}};
    Remarks remarks;
    for (const NearKeyword& near : FindNearKeywords(loaded.scene)) {
      remarks.push_back(MakeWarning("near-keyword", Describe(near), near.count));
    }
    messages.TellAll(source.path, std::move(remarks));
    return loaded;
  }
  const std::uint32_t seconds = source.seconds ? *source.seconds : ReadSeconds(source.path);
  auto [imported, confinement] = ReadForeignScene(source.path, source.import, seconds, begin);
  WarnOfConfinement(confinement, source.path, messages);
  messages.TellAll(source.path, std::move(imported.remarks));
  return {std::move(imported.scene), std::move(imported.leftOut), std::move(imported.sideFiles),
          std::move(confinement)};
}

}  // namespace mapexport
