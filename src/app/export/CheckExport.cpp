#include "app/export/CheckExport.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <map>
#include <ostream>
#include <string_view>

#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include "output/OutputTarget.h"
#include "system/Descriptor.h"
#include "system/FdOutput.h"
#include "system/RunError.h"

namespace mapexport {
namespace {

// A scene shorter than this many weld distances is probably in other units than intended.
constexpr float kFewWeldDistances = 20;

/// Why the file at `path` can't be appended to; empty when it can.
std::string WriteTrouble(const std::string& path) {
  const Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
  if (!file.IsOpen()) return ErrnoText(errno);
  FdOutput output(file.Get());
  std::ostream(&output) << std::string(65536, '\0');
  if (const int error = output.Finish(); error != 0) return ErrnoText(error);
  return fsync(file.Get()) == 0 ? "" : ErrnoText(errno);
}

/// Whether warnings of `code` are about putting files in place: output, log or settings.
bool IsOfPlacing(std::string_view code) {
  constexpr RemarkCode kCodes[] = {"attributes-not-kept", "folder-not-synced", "output-not-locked",
                                   "settings-not-saved"};
  return std::ranges::find(kCodes, code, &RemarkCode::Text) != std::ranges::end(kCodes);
}

}  // namespace

void ThrowNotExported(const std::string& output, const std::string& path,
                      const std::string& reason) {
  const std::string trouble = WriteTrouble(path);
  if (!trouble.empty()) ThrowCannotWrite(output, trouble);
  throw RunError(fmt::format("{}: not exported: {}", output, reason));
}

ModelCheckResult CheckExport(const std::string& output, const std::string& path) {
  ModelCheckResult checked = CheckModelFile(path, reader::LayoutOfName(output));
  const auto error =
      std::ranges::find(checked.problems, ModelSeverity::kError, &ModelProblem::severity);
  if (error != checked.problems.end()) ThrowNotExported(output, path, ToLine(*error));
  return checked;
}

void RequireNoWarning(const ExportArguments& arguments, const std::string& output,
                      std::span<const Remark> told) {
  if (!arguments.strict) return;
  std::map<std::string_view, std::uint64_t> counts;
  for (const Remark& remark : told) {
    if (remark.kind != RemarkKind::kWarning || IsOfPlacing(remark.code)) continue;
    if (std::ranges::find(arguments.allowed, remark.code) != arguments.allowed.end()) continue;
    std::uint64_t& count = counts[remark.code];
    count = AddCounts(count, remark.stands);
  }
  if (counts.empty()) return;
  std::string list;
  for (const auto& [code, count] : counts) {
    list += fmt::format("{}{}", list.empty() ? "" : ", ", code);
    if (count > 1) list += fmt::format(" ({})", count);
  }
  throw RunError(
      fmt::format("{}: not exported: with --strict, warnings are errors: {}; --allow CODE lets one "
                  "pass",
                  output, list));
}

void WarnOfWelding(const ExportArguments& arguments, const ExportSystem::Values& values,
                   const SceneCensus& scene, Messages& messages) {
  if (!values.weld) return;
  if (arguments.unweld) {
    messages.Warning("weld-stays-on",
                     arguments.dialog
                         ? "--no-weld has no effect: the dialog ended with welding on"
                         : "--no-weld has no effect: \"Remove T-Vertices\", which keeps welding "
                           "on, was set then");
  }
  if (scene.vertices > 0 && scene.extent < kFewWeldDistances * values.weldDistance) {
    messages.Warning(
        "small-for-welding",
        fmt::format("{}: its largest extent, {}, is under {} times the weld distance, {}: welding "
                    "may merge separate parts",
                    arguments.scene.path, scene.extent, kFewWeldDistances, values.weldDistance));
  }
}

}  // namespace mapexport
