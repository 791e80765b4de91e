// Custom properties of foreign nodes as the host's user property text.
#include "importer/text/UserText.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "importer/text/HostText.h"
#include "scene/NearKeywords.h"
#include "system/FaceKeywords.h"

namespace mapexport {
namespace {

using Sets = PropertyValue::Sets;

std::string InSmallLetters(std::string_view text) {
  std::string small(text);
  for (char& c : small) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return small;
}

/// How many characters at `i` of a text end a line, though they are no line end.
std::size_t SeparatorLength(std::string_view text, std::size_t i) {
  if (text[i] == ',' || text[i] == ';') return 1;
  return text.substr(i, 2) == "\\n" ? 2 : 0;
}

/// `text` with line ends in place of other separators.
std::string WithLineEnds(std::string_view text) {
  std::string lines;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = SeparatorLength(text, i);
    if (length == 0) {
      lines += text[i++];
      continue;
    }
    while (lines.ends_with(' ')) lines.pop_back();
    lines += '\n';
    i = std::min(text.find_first_not_of(' ', i + length), text.size());
  }
  return lines;
}

}  // namespace

PropertyValue PropertyOfBool(bool value) {
  return {value ? Sets::kOn : Sets::kOff, value ? "true" : "false"};
}

PropertyValue PropertyOfNumber(double value) {
  return {value != 0 ? Sets::kOn : Sets::kOff, fmt::format("{}", value)};
}

PropertyValue PropertyOfText(std::string_view value) {
  constexpr std::array<std::string_view, 3> kOn{"true", "yes", "1"};
  constexpr std::array<std::string_view, 4> kOff{"false", "no", "0", ""};
  constexpr std::size_t kLongestShown = 40;
  PropertyValue property{.sets = Sets::kNothing, .shown = "a long text"};
  if (value.size() > kLongestShown) return property;
  const std::size_t begin = std::min(value.find_first_not_of(' '), value.size());
  const std::string small =
      InSmallLetters(value.substr(begin, value.find_last_not_of(' ') + 1 - begin));
  if (std::ranges::find(kOn, small) != kOn.end()) property.sets = Sets::kOn;
  if (std::ranges::find(kOff, small) != kOff.end()) property.sets = Sets::kOff;
  property.shown = fmt::format("\"{}\"", FirstLine(value));
  return property;
}

PropertyValue PropertyOfKind(std::string_view kind) {
  return {Sets::kNothing, std::string(kind)};
}

bool UserText::IsTextName(std::string_view name) {
  const std::string small = InSmallLetters(name);
  return small == "userproperties" || small == "udp3dsmax";
}

bool UserText::Matters(std::string_view name) {
  if (IsTextName(name)) return true;
  const std::string small = InSmallLetters(name);
  return IsKeyword(small) || !NearestKeyword(small).empty();
}

void UserText::AddText(std::string_view text) {
  AddLines(WithLineEnds(text));
}

void UserText::AddProperty(std::string_view name, const PropertyValue& value) {
  if (value.sets == Sets::kOff) return;
  const std::string small = InSmallLetters(name);
  const auto keyword = std::ranges::find(kFaceKeywords, std::string_view(small));
  if (keyword != kFaceKeywords.end()) {
    if (value.sets == Sets::kOn)
      AddKeyword(*keyword);
    else
      idle_.push_back({std::string(name), value.shown, "its value is neither true nor false"});
  } else if (const std::string_view near = NearestKeyword(small); !near.empty()) {
    idle_.push_back(
        {std::string(name), value.shown, fmt::format("it is no keyword; \"{}\" is one", near)});
  } else if (IsTextName(name)) {
    idle_.push_back({std::string(name), value.shown, "it isn't text"});
  }
}

void UserText::Add(const UserText& other) {
  AddEffects(other);
  idle_.insert(idle_.end(), other.idle_.begin(), other.idle_.end());
}

void UserText::AddEffects(const UserText& other) {
  AddLines(other.text_);
  for (const std::string_view keyword : other.keywords_) AddKeyword(keyword);
}

std::string UserText::Text() const {
  std::string text = text_;
  for (const std::string_view keyword : keywords_) {
    if (!text.empty() && !text.ends_with('\n')) text += "\r\n";
    text += keyword;
    text += "\r\n";
  }
  return text;
}

void UserText::AddLines(const std::string& lines) {
  if (lines.empty() || lines == text_) return;
  if (!text_.empty() && !text_.ends_with('\n')) text_ += "\r\n";
  text_ += lines;
}

void UserText::AddKeyword(std::string_view keyword) {
  if (std::ranges::find(keywords_, keyword) == keywords_.end()) keywords_.push_back(keyword);
}

void IdleProperties::Add(const UserText& text, const std::string& nodeName) {
  for (const UserText::IdleProperty& idle : text.Idle()) nodesOf_[idle].push_back(nodeName);
}

void IdleProperties::AddRemarks(Remarks& remarks) {
  for (auto& [idle, nodes] : nodesOf_) {
    const std::string more = nodes.size() == 1 ? "" : fmt::format(" and {} more", nodes.size() - 1);
    remarks.push_back(
        MakeWarning("idle-member",
                    fmt::format("the property \"{}\" ({}) of node \"{}\"{} does nothing: {}",
                                idle.name, idle.value, nodes.front(), more, idle.reason),
                    nodes.size()));
    remarks.back().nodes = std::move(nodes);
  }
}

}  // namespace mapexport
