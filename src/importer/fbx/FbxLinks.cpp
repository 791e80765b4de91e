// The objects of an FBX file and what is connected to what.
#include "importer/fbx/FbxLinks.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <system_error>

#include "importer/text/StatementLines.h"

namespace mapexport {
namespace {

constexpr std::size_t kMostProperties = 5;
constexpr std::string_view kBinaryMark("Kaydara FBX Binary  \0\x1A\0", 23);

/// A record's name and its first properties, each a number or a text.
struct Property {
  std::optional<std::int64_t> number;
  std::string_view text;
};
struct Statement {
  std::string_view name;
  std::array<Property, kMostProperties> properties;
};

enum class Section { kOther, kObjects, kConnections };

Section SectionNamed(std::string_view name) {
  return name == "Objects"       ? Section::kObjects
         : name == "Connections" ? Section::kConnections
                                 : Section::kOther;
}

/// "Model::Box" in ASCII files, "Box", NUL, 1, "Model" in binary ones.
std::string_view NameWithoutClass(std::string_view text) {
  const std::size_t separator = text.find(std::string_view("\0\1", 2));
  if (separator != std::string_view::npos) return text.substr(0, separator);
  const std::size_t colons = text.find("::");
  return colons == std::string_view::npos ? text : text.substr(colons + 2);
}

std::optional<FbxObject::Kind> KindNamed(std::string_view name) {
  if (name == "Model") return FbxObject::Kind::kModel;
  if (name == "Material") return FbxObject::Kind::kMaterial;
  if (name == "Geometry") return FbxObject::Kind::kGeometry;
  return std::nullopt;
}

/// Takes a property of the object that was taken last: P: "Name", "Type", "Label", "Flags", VALUE.
void TakeProperty(const Statement& statement, FbxLinks& into) {
  const bool isUserText = statement.name == "P" && statement.properties[0].text == "UDP3DSMAX";
  if (!isUserText || into.objects.empty()) return;
  into.objects.back().userText = statement.properties[4].text;
}

/// Takes what the statement of a section says; `text` is the whole file's. False when the statement
/// isn't what it has to be.
bool Take(Section section, const Statement& statement, std::string_view text, FbxLinks& into) {
  const auto& p = statement.properties;
  if (section == Section::kObjects) {
    const std::optional<FbxObject::Kind> kind = KindNamed(statement.name);
    if (!kind) return true;
    if (!p[0].number) return false;
    into.objects.push_back(
        {*kind, *p[0].number, std::string(NameWithoutClass(p[1].text)), std::string(p[2].text)});
  } else if (section == Section::kConnections && p[0].text == "OO") {
    if (!p[1].number || !p[2].number) return false;
    into.links.push_back(
        {*p[1].number, *p[2].number, static_cast<std::size_t>(p[0].text.data() - text.data())});
  }
  return true;
}

// --- ASCII ---

/// The statement "Name: 12, "text", 3 {" of a line; texts hold no quotes.
Statement ParseLine(std::string_view line) {
  Statement statement;
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return statement;
  statement.name = line.substr(0, colon);
  line.remove_prefix(colon + 1);
  constexpr std::string_view kBetween = " \t,";
  for (Property& property : statement.properties) {
    line.remove_prefix(std::min(line.find_first_not_of(kBetween), line.size()));
    if (line.starts_with('"')) {
      line.remove_prefix(1);
      property.text = line.substr(0, line.find('"'));
      line.remove_prefix(std::min(property.text.size() + 1, line.size()));
    } else {
      const std::string_view word = line.substr(0, line.find_first_of(" \t,{"));
      std::int64_t number = 0;
      const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
      if (!word.empty() && error == std::errc{} && end == word.data() + word.size()) {
        property.number = number;
      }
      line.remove_prefix(word.size());
    }
  }
  return statement;
}

/// What the braces outside of texts add to the depth.
int DepthChange(std::string_view line) {
  int change = 0;
  bool isInText = false;
  for (const char c : line) {
    if (c == '"') isInText = !isInText;
    if (isInText) continue;
    if (c == ';') break;
    change += c == '{' ? 1 : c == '}' ? -1 : 0;
  }
  return change;
}

std::optional<FbxLinks> ReadAscii(std::string_view text) {
  FbxLinks links;
  Section section = Section::kOther;
  StatementLines lines(text);
  int depth = 0;
  bool isInModel = false;
  while (lines.Next()) {
    const std::string_view line = lines.Statement();
    if (line.starts_with(';')) continue;
    if (depth == 0) section = SectionNamed(line.substr(0, line.find(':')));
    if (depth == 1 && section != Section::kOther) {
      const Statement statement = ParseLine(line);
      if (!Take(section, statement, text, links)) return std::nullopt;
      isInModel = section == Section::kObjects && statement.name == "Model";
    } else if (depth == 3 && isInModel && line.starts_with("P:")) {
      TakeProperty(ParseLine(line), links);
    }
    depth += DepthChange(line);
    if (depth < 0) return std::nullopt;
  }
  if (depth != 0) return std::nullopt;
  return links;
}

// --- binary ---

/// The records of a binary file; what lies beyond the end reads as 0 and sets IsDamaged.
class BinaryReader {
 public:
  explicit BinaryReader(std::string_view text) : text_(text), at_(kBinaryMark.size()) {
    isWide_ = Integer<std::uint32_t>() >= 7500;
  }

  std::optional<FbxLinks> Run() {
    while (const std::optional<Record> record = NextRecord(text_.size())) {
      const Section section = SectionNamed(record->statement.name);
      if (section != Section::kOther) {
        while (const std::optional<Record> inner = NextRecord(record->end)) {
          if (!Take(section, inner->statement, text_, links_)) return std::nullopt;
          if (section == Section::kObjects && inner->statement.name == "Model") {
            TakeProperties(*inner);
          }
          at_ = inner->end;
        }
      }
      at_ = record->end;
    }
    if (isDamaged_) return std::nullopt;
    return std::move(links_);
  }

 private:
  struct Record {
    Statement statement;
    std::size_t content = 0;  ///< where the records within it begin
    std::size_t end = 0;
  };

  void TakeProperties(const Record& model) {
    at_ = model.content;
    while (const std::optional<Record> list = NextRecord(model.end)) {
      if (list->statement.name == "Properties70") {
        at_ = list->content;
        while (const std::optional<Record> property = NextRecord(list->end)) {
          TakeProperty(property->statement, links_);
          at_ = property->end;
        }
      }
      at_ = list->end;
    }
  }

  template <class T>
  T Integer() {
    static_assert(std::endian::native == std::endian::little);
    T value{};
    const std::string_view bytes = Bytes(sizeof(T));
    if (bytes.size() == sizeof(T)) std::memcpy(&value, bytes.data(), sizeof(T));
    return value;
  }

  std::string_view Bytes(std::uint64_t count) {
    if (count > text_.size() - at_) {
      isDamaged_ = true;
      return {};
    }
    const std::string_view bytes = text_.substr(at_, static_cast<std::size_t>(count));
    at_ += bytes.size();
    return bytes;
  }

  std::uint64_t Offset() {
    return isWide_ ? Integer<std::uint64_t>() : std::uint64_t{Integer<std::uint32_t>()};
  }

  /// Empty at the record of zeros that ends a list, at `limit`, and where the file is damaged.
  std::optional<Record> NextRecord(std::size_t limit) {
    if (isDamaged_ || at_ >= limit) return std::nullopt;
    const std::uint64_t end = Offset();
    const std::uint64_t propertyCount = Offset();
    const std::uint64_t propertyBytes = Offset();
    Record record;
    record.statement.name = Bytes(Integer<std::uint8_t>());
    const std::size_t properties = at_;
    if (end == 0) return std::nullopt;
    if (end < at_ || end > limit || propertyBytes > end - at_) isDamaged_ = true;
    for (std::size_t i = 0; i < std::min<std::uint64_t>(propertyCount, kMostProperties); ++i) {
      if (isDamaged_ || !ReadProperty(record.statement.properties[i])) break;
    }
    if (isDamaged_) return std::nullopt;
    record.content = properties + static_cast<std::size_t>(propertyBytes);
    record.end = static_cast<std::size_t>(end);
    return record;
  }

  /// False for a kind that nothing here needs, behind which no property is read.
  bool ReadProperty(Property& property) {
    switch (Integer<char>()) {
      case 'L':
        property.number = Integer<std::int64_t>();
        return true;
      case 'I':
        property.number = Integer<std::int32_t>();
        return true;
      case 'S':
        property.text = Bytes(Integer<std::uint32_t>());
        return true;
      default:
        return false;
    }
  }

  std::string_view text_;
  std::size_t at_;
  bool isWide_ = false;
  bool isDamaged_ = false;
  FbxLinks links_;
};

}  // namespace

std::optional<FbxLinks> ReadFbxLinks(std::string_view text) {
  return text.starts_with(kBinaryMark) ? BinaryReader(text).Run() : ReadAscii(text);
}

}  // namespace mapexport
