#include "app/LoadScene.h"

#include <utility>

#include <fmt/format.h>

#include "app/ReadForeignScene.h"
#include "scene/NearKeywords.h"
#include "scene/SceneFile.h"

namespace mapexport {
namespace {

/// What a reader that was taken over could have done, for the gravest part that is missing.
const char* StateOf(const Confinement& confinement) {
  if (!confinement.calls.empty()) {
    return confinement.files.empty() ? "was only kept from writing files" : "was not confined";
  }
  return confinement.files.empty() ? "kept root's rights"
                                   : "was not kept from looking into other processes";
}

void WarnOfConfinement(const Confinement& confinement, const std::string& path,
                       Messages& messages) {
  std::string lacks;
  for (const auto& [part, lack] : {std::pair("no filter of system calls", &confinement.calls),
                                   std::pair("no Landlock", &confinement.files),
                                   std::pair("capabilities", &confinement.capabilities)}) {
    if (!lack->empty()) lacks += fmt::format("{}{}: {}", lacks.empty() ? "" : "; ", part, *lack);
  }
  if (lacks.empty()) return;
  messages.Warning("reader-not-confined", fmt::format("{}: was read by a process that {}: {}", path,
                                                      StateOf(confinement), lacks));
}

}  // namespace

LoadedScene LoadScene(const SceneSource& source, Messages& messages, Stages& stages) {
  const auto begin = [&stages](const char* stage) { stages.Begin(stage); };
  if (IsSceneFile(source.path)) {
    begin("reading");
    if (source.import.up != UpAxis::kAuto || source.import.scale) {
      messages.Warning("option-without-effect",
                       fmt::format("{}: --up and --scale have no effect: a scene file holds the "
                                   "scene as the exporter sees it",
                                   source.path));
    }
    LoadedScene loaded{ReadSceneFile(source.path), {}, {}, {}};
    for (const NearKeyword& near : FindNearKeywords(loaded.scene)) {
      messages.Warning("near-keyword", fmt::format("{}: {}", source.path, Describe(near)),
                       near.count);
    }
    return loaded;
  }
  auto [imported, confinement] =
      ReadForeignScene(source.path, source.import, source.seconds, begin);
  WarnOfConfinement(confinement, source.path, messages);
  for (ImportRemark& remark : imported.remarks) {
    remark.text = fmt::format("{}: {}", source.path, remark.text);
    messages.Tell(std::move(remark));
  }
  return {std::move(imported.scene), std::move(imported.leftOut), std::move(imported.sideFiles),
          std::move(confinement)};
}

}  // namespace mapexport
