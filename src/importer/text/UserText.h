// Custom properties of foreign nodes as the host's user property text.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "system/Remark.h"

namespace mapexport {

/// What a custom property's value sets.
struct PropertyValue {
  enum class Sets { kOn, kOff, kNothing };
  Sets sets = Sets::kNothing;
  std::string shown;  ///< for a message
};

PropertyValue PropertyOfBool(bool value);
/// On unless it is 0.
PropertyValue PropertyOfNumber(double value);
/// "true", "yes" and "1" are on, "false", "no", "0" and an empty text are off, in any case.
PropertyValue PropertyOfText(std::string_view value);
/// One of another kind: "an array", ...
PropertyValue PropertyOfKind(std::string_view kind);

/// The user property text that a node's custom properties make: the lines of those that hold text,
/// then a line for each one that is named like a keyword and is on, in the exporter's spelling.
class UserText {
 public:
  /// Whether a property of that name holds user property text: "userProperties", as our
  /// documentation asks for, and the names that the modelling tools give it.
  static bool IsTextName(std::string_view name);
  /// Whether a property of that name is one of these, or named like a keyword or nearly so.
  static bool Matters(std::string_view name);

  /// Adds the lines of a property that holds text, unless they are there already. Commas,
  /// semicolons and a written "\n" end a line, too; blanks beside them are dropped.
  void AddText(std::string_view text);
  /// Adds a property of any other kind. One that is named like a keyword, in any case, counts when
  /// its value is on. What was probably meant to count and doesn't is remembered. Others are
  /// ignored.
  void AddProperty(std::string_view name, const PropertyValue& value);
  /// Adds all that `other` holds.
  void Add(const UserText& other);
  /// Adds what has an effect.
  void AddEffects(const UserText& other);

  /// Whether there is neither an effect nor a remark.
  bool IsEmpty() const { return text_.empty() && keywords_.empty() && idle_.empty(); }
  /// Lines of text end as in the file, those of keywords with CR LF.
  std::string Text() const;

  /// A property without effect.
  struct IdleProperty {
    std::string name;
    std::string value;
    std::string reason;

    friend bool operator<(const IdleProperty& a, const IdleProperty& b) {
      return std::tie(a.name, a.value, a.reason) < std::tie(b.name, b.value, b.reason);
    }
  };
  const std::vector<IdleProperty>& Idle() const { return idle_; }

 private:
  void AddLines(const std::string& lines);
  void AddKeyword(std::string_view keyword);

  std::string text_;
  std::vector<std::string_view> keywords_;
  std::vector<IdleProperty> idle_;
};

/// The properties without effect of all nodes.
class IdleProperties {
 public:
  void Add(const UserText& text, const std::string& nodeName);
  /// A warning for each property and value, with its nodes and the reason.
  void AddRemarks(Remarks& remarks);

 private:
  std::map<UserText::IdleProperty, std::vector<std::string>> nodesOf_;
};

}  // namespace mapexport
