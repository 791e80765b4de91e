#include "app/LoadScene.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "importer/LeftOut.h"
#include "importer/SourceFile.h"
#include "scene/IdleKeywords.h"
#include "scene/KeywordFile.h"
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

/// Adds the creases that the meshes of `node` and below have lost, and the names of these nodes. A
/// mesh that several nodes share counts once.
void AddLostCreases(const SceneNode& node, std::set<const Mesh*>& counted, std::size_t& creases,
                    std::vector<std::string>& names) {
  if (node.mesh != nullptr && node.lostCreases > 0) {
    if (counted.insert(node.mesh.get()).second) creases += node.lostCreases;
    names.push_back(node.name);
  }
  for (const SceneNode& child : node.children) AddLostCreases(child, counted, creases, names);
}

LoadedScene LoadSceneFile(const SceneSource& source, Messages& messages) {
  if (source.import.up != UpAxis::kAuto || source.import.scale || source.import.skipHidden) {
    messages.Warning(
        "option-without-effect",
        fmt::format("{}: --up, --scale and --hidden have no effect: a scene file holds "
                    "the scene as the exporter sees it",
                    source.path));
  }
  LoadedScene loaded{ReadSceneFile(source.path, {.mostBytes = LargestScene()}), {}, {}, {}};
  Remarks remarks;
  for (NearKeyword& near : FindNearKeywords(loaded.scene)) {
    remarks.push_back(Describe(std::move(near)));
  }
  LeftOut leftOut;
  std::set<const Mesh*> counted;
  std::vector<std::string> names;
  AddLostCreases(loaded.scene.root, counted, leftOut.creases, names);
  if (leftOut.creases > 0) {
    leftOut.AddSummary(remarks);
    remarks.back().nodes = std::move(names);
    loaded.leftOut = leftOut.Items();
  }
  messages.TellAll(source.path, std::move(remarks));
  return loaded;
}

LoadedScene LoadForeignScene(const SceneSource& source, Messages& messages, Stages& stages) {
  const std::uint32_t seconds = source.seconds ? *source.seconds : ReadSeconds(source.path);
  auto [imported, confinement] = ReadForeignScene(
      source.path, source.import, seconds, [&stages](const char* stage) { stages.Begin(stage); });
  WarnOfConfinement(confinement, source.path, messages);
  messages.TellAll(source.path, std::move(imported.remarks));
  return {std::move(imported.scene), std::move(imported.leftOut), std::move(imported.sideFiles),
          std::move(confinement)};
}

bool IsForeign(const std::string& path) {
  // Piped input has no extension, so it is a scene file.
  return !IsSceneFile(path) && path != "/dev/stdin";
}

}  // namespace

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

void AddNamedInputs(const SceneSource& source, TakenFiles& inputs) {
  inputs.Add(source.path, "scene");
  if (source.keywords) inputs.Add(*source.keywords, "file of --keywords");
}

LoadedScene LoadScene(const SceneSource& source, Messages& messages, Stages& stages) {
  std::vector<KeywordRule> rules;
  if (source.keywords) rules = ReadKeywordFile(*source.keywords);
  const bool isForeign = IsForeign(source.path);
  if (!isForeign) stages.Begin("reading");
  LoadedScene loaded =
      isForeign ? LoadForeignScene(source, messages, stages) : LoadSceneFile(source, messages);
  if (source.oneSided) {
    for (SceneMaterial& material : loaded.scene.materials) material.twoSided = false;
  }
  if (source.keywords) messages.TellAll(*source.keywords, SetKeywords(rules, loaded.scene));
  messages.TellAll(source.path, FindIdleKeywords(loaded.scene));
  return loaded;
}

}  // namespace mapexport
