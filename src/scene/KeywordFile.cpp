#include "scene/KeywordFile.h"

#include <algorithm>

#include <fmt/format.h>

#include "scene/FileText.h"
#include "scene/NearKeywords.h"
#include "scene/SceneError.h"
#include "scene/UserProperties.h"
#include "system/Ascii.h"
#include "system/FaceKeywords.h"
#include "system/PrintableText.h"
#include "system/ShellPattern.h"

namespace mapexport {
namespace {

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kSpace = " \t\r";
  const std::size_t begin = std::min(text.find_first_not_of(kSpace), text.size());
  return text.substr(begin, text.find_last_not_of(kSpace) + 1 - begin);
}

/// Calls `visit` with each part of `text` between separators, blanks at its ends taken off; what
/// has no separator is one part.
template <class Visitor>
void VisitParts(std::string_view text, char separator, const Visitor& visit) {
  while (true) {
    const std::size_t end = text.find(separator);
    visit(Trimmed(text.substr(0, end)));
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + 1);
  }
}

/// One line of a keyword file.
class RuleLine {
 public:
  RuleLine(const std::string& path, std::size_t number, std::string_view text)
      : path_(path), number_(number), text_(text) {}

  KeywordRule Read() const {
    const std::size_t colon = text_.rfind(':');
    if (colon == std::string_view::npos) {
      Fail(fmt::format("{} is no \"PATTERN: keyword, keyword\"", Quoted(text_)));
    }
    KeywordRule rule{number_, std::string(Trimmed(text_.substr(0, colon))), {}};
    if (rule.pattern.empty()) Fail("there is no pattern before the \":\"");
    VisitParts(text_.substr(colon + 1), ',',
               [&](std::string_view word) { rule.keywords.push_back(KeywordOf(word)); });
    return rule;
  }

 private:
  std::string_view KeywordOf(std::string_view word) const {
    const auto keyword = std::ranges::find(kFaceKeywords, std::string_view(LowerCase(word)));
    if (keyword != kFaceKeywords.end()) return *keyword;
    if (word.empty()) Fail("a keyword is missing");
    const std::string_view near = NearestKeyword(word);
    Fail(near.empty() ? fmt::format("{} is no keyword", Quoted(word))
                      : fmt::format("{} is no keyword; \"{}\" is one", Quoted(word), near));
  }

  [[noreturn]] void Fail(const std::string& reason) const {
    throw SceneError(fmt::format("{}: line {}: {}", path_, number_, reason));
  }

  const std::string& path_;
  std::size_t number_;
  std::string_view text_;
};

void AddLine(std::string& text, std::string_view keyword) {
  if (HasWord(text, keyword)) return;
  if (!text.empty() && !text.ends_with('\n')) text += "\r\n";
  text += keyword;
  text += "\r\n";
}

/// What a rule matches.
struct RuleUse {
  bool anyNode = false;
  bool anyMesh = false;
};

void SetKeywords(const std::vector<KeywordRule>& rules, SceneNode& node,
                 std::vector<RuleUse>& uses) {
  for (std::size_t i = 0; i < rules.size(); ++i) {
    if (!MatchesPattern(node.name, rules[i].pattern)) continue;
    uses[i].anyNode = true;
    if (node.object != SceneObject::kMesh) continue;
    uses[i].anyMesh = true;
    for (const std::string_view keyword : rules[i].keywords) AddLine(node.userProperties, keyword);
  }
  for (SceneNode& child : node.children) SetKeywords(rules, child, uses);
}

}  // namespace

std::vector<KeywordRule> ReadKeywordFile(const std::string& path) {
  const FileText file(path);
  std::vector<KeywordRule> rules;
  std::size_t number = 0;
  VisitParts(file.View(), '\n', [&](std::string_view line) {
    ++number;
    if (line.empty() || line.starts_with('#')) return;
    rules.push_back(RuleLine(path, number, line).Read());
  });
  return rules;
}

Remarks SetKeywords(const std::vector<KeywordRule>& rules, Scene& scene) {
  std::vector<RuleUse> uses(rules.size());
  SetKeywords(rules, scene.root, uses);
  Remarks remarks;
  for (std::size_t i = 0; i < rules.size(); ++i) {
    if (uses[i].anyMesh) continue;
    remarks.push_back(
        MakeWarning("unused-pattern",
                    fmt::format("line {}: no node {}is named like {}", rules[i].line,
                                uses[i].anyNode ? "with a mesh " : "", Quoted(rules[i].pattern))));
  }
  return remarks;
}

}  // namespace mapexport
