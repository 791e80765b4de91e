#include "app/export/OptionsFile.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <toml++/toml.h>

#include "app/export/ExportArguments.h"
#include "cli/NearestName.h"
#include "scene/FileText.h"
#include "system/PrintableText.h"
#include "system/RunError.h"
#include "system/ShellPattern.h"

namespace mapexport {
namespace {

namespace fs = std::filesystem;

constexpr const char* kName = "mapexport.toml";

/// The text of a number as a command line has it; others, such as inf, are refused later.
template <typename Number>
std::string NumberText(const toml::node& value) {
  return fmt::format("{}", value.value_exact<Number>().value());
}

class OptionsReader {
 public:
  OptionsReader(std::string path, std::string scene, const CommandInfo* command)
      : scene_(std::move(scene)), command_(command) {
    result_.path = std::move(path);
  }

  /// `folder` is the file's, `relative` the scene's path below it.
  FileOptions Read(const fs::path& folder, const fs::path& relative) {
    folder_ = folder;
    const FileText text(result_.path);
    const toml::table file = Parse(text.View());
    const auto entries = InOrder(file);
    for (const auto& [key, value] : entries) {
      if (!value->is_table()) Take(*key, *value);
    }
    for (const auto& [key, value] : entries) {
      if (value->is_table()) TakeTable(*key, *value->as_table(), relative);
    }
    return std::move(result_);
  }

 private:
  using Entry = std::pair<const toml::key*, const toml::node*>;

  [[noreturn]] void Fail(const toml::source_region& where, const std::string& reason) const {
    throw RunError(fmt::format("{}: line {}: {}", result_.path, where.begin.line, reason));
  }

  toml::table Parse(std::string_view text) const {
    try {
      return toml::parse(text);
    } catch (const toml::parse_error& error) {
      Fail(error.source(), std::string(error.description()));
    }
  }

  /// The entries as they are in the file: the library sorts them by name.
  static std::vector<Entry> InOrder(const toml::table& table) {
    std::vector<Entry> entries;
    for (auto&& [key, value] : table) entries.emplace_back(&key, &value);
    std::ranges::sort(entries, {}, [](const Entry& entry) {
      const toml::source_position& at = entry.first->source().begin;
      return std::pair(at.line, at.column);
    });
    return entries;
  }

  void TakeTable(const toml::key& pattern, const toml::table& table, const fs::path& relative) {
    const bool isOfPath = pattern.str().find('/') != std::string_view::npos;
    const std::string name = isOfPath ? relative.generic_string() : relative.filename().string();
    const bool matches = MatchesPattern(name, pattern.str());
    // Read what is for other scenes, too: a mistake shows at once.
    const FileOptions before = matches ? FileOptions{} : result_;
    for (const auto& [key, value] : InOrder(table)) Take(*key, *value);
    if (!matches) result_ = before;
  }

  void Take(const toml::key& key, const toml::node& value) {
    const std::string name(key.str());
    const auto option = std::ranges::find(ExportOptions(), name, &OptionInfo::name);
    if (option == ExportOptions().end()) {
      std::vector<std::string> names;
      for (const OptionInfo& known : ExportOptions()) {
        if (ShapesOutput(known)) names.emplace_back(known.name);
      }
      Fail(key.source(),
           fmt::format("export has no option {}{}", Quoted(name), Suggestion(name, names)));
    }
    if (!ShapesOutput(*option)) {
      Fail(key.source(),
           fmt::format("{} is not allowed here: it does not shape the output", Quoted(name)));
    }
    const std::optional<std::string> text = TextOf(*option, value);
    result_.options.erase(name);
    if (!text) return;
    result_.options[name] = {*text};
    result_.lines[name] = key.source().begin.line;
    Check(key, {{name, {*text}}});
  }

  /// The value as CommandLine has it; nothing for a flag that is off.
  std::optional<std::string> TextOf(const OptionInfo& option, const toml::node& value) const {
    const bool isFlag = option.kind == OptionKind::kFlag;
    if (isFlag || option.kind == OptionKind::kSwitch) {
      if (!value.is_boolean()) FailType(option, value, "true or false");
      const bool isOn = value.value_exact<bool>().value();
      if (isFlag) return isOn ? std::optional<std::string>("") : std::nullopt;
      return isOn ? "on" : "off";
    }
    const bool isPath = option.argument == std::string_view("FILE");
    if (isPath && !value.is_string()) FailType(option, value, "a text");
    if (value.is_integer()) return NumberText<std::int64_t>(value);
    if (value.is_floating_point()) return NumberText<double>(value);
    if (!value.is_string() || option.kind == OptionKind::kNumber) {
      FailType(option, value, option.kind == OptionKind::kNumber ? "a number" : "a text");
    }
    const std::string text = value.value_exact<std::string>().value();
    return isPath && !text.empty() ? (folder_ / text).string() : text;
  }

  [[noreturn]] void FailType(const OptionInfo& option, const toml::node& value,
                             std::string_view wanted) const {
    Fail(value.source(), fmt::format("{} must be {}", option.name, wanted));
  }

  void Check(const toml::key& key, const GivenOptions& options) const {
    try {
      ReadExportArguments({command_, {scene_, "output"}, options});
    } catch (const UsageError& error) {
      Fail(key.source(), error.what());
    }
  }

  const std::string scene_;
  const CommandInfo* command_;
  fs::path folder_;
  FileOptions result_;
};

}  // namespace

std::vector<std::string> OptionsFilePlaces(const std::string& scene) {
  std::error_code error;
  const fs::path whole = fs::absolute(scene, error).lexically_normal();
  const fs::path current = fs::current_path(error);
  // A scene from a pipe is beside nothing.
  if (error || scene == "/dev/stdin") return {};
  std::vector<std::string> places;
  for (fs::path folder = whole.parent_path();; folder = folder.parent_path()) {
    const fs::path near = folder.lexically_relative(current);
    const bool isAbove = near.empty() || *near.begin() == "..";
    const fs::path shown = isAbove ? folder : near == "." ? fs::path() : near;
    places.push_back((shown / kName).string());
    if (folder == folder.parent_path()) return places;
  }
}

std::string FindOptionsFile(const std::string& scene) {
  for (std::string& place : OptionsFilePlaces(scene)) {
    std::error_code error;
    if (fs::status(place, error).type() == fs::file_type::not_found) continue;
    // A folder that may not be searched has no file for this user. Another one that can't be
    // examined is reported when it is read.
    const bool isOutOfReach = fs::symlink_status(place, error).type() == fs::file_type::none &&
                              error == std::errc::permission_denied;
    if (!isOutOfReach) return std::move(place);
  }
  return {};
}

FileOptions ReadOptionsFile(const std::string& scene, const CommandInfo* command) {
  const std::string path = FindOptionsFile(scene);
  if (path.empty()) return {};
  std::error_code error;
  const fs::path folder = fs::absolute(path, error).parent_path();
  const fs::path whole = fs::absolute(scene, error).lexically_normal();
  return OptionsReader(path, scene, command)
      .Read(fs::path(path).parent_path(), whole.lexically_relative(folder));
}

}  // namespace mapexport
