// The objects of an FBX file and what is connected to what.
#include "importer/fbx/FbxLinks.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <system_error>

#include "importer/text/Numbers.h"
#include "importer/text/StatementLines.h"
#include "importer/text/UserText.h"

namespace mapexport {
namespace {

constexpr std::size_t kMostProperties = 6;
constexpr std::size_t kMatrixNumbers = 16;
using MatrixNumbers = std::array<double, kMatrixNumbers>;
constexpr std::string_view kBinaryMark("Kaydara FBX Binary  \0\x1A\0", 23);

/// A record's name and its first properties, each a number or a text.
struct Property {
  std::optional<std::int64_t> integer;
  std::optional<double> number;  ///< of an integer, too
  std::string_view text;
  bool isText = false;
  bool IsGiven() const { return isText || number; }
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
  if (name == "Deformer") return FbxObject::Kind::kDeformer;
  return std::nullopt;
}

bool HasKeptProperties(std::string_view kind) {
  return kind == "Model" || kind == "Geometry" || kind == "Deformer";
}

/// Takes a property of the object that was taken last: P: "Name", "Type", "Label", "Flags", VALUE.
void TakeProperty(const Statement& statement, FbxLinks& into) {
  if (statement.name != "P" || into.objects.empty()) return;
  const auto& p = statement.properties;
  const std::string_view name = p[0].text;
  const bool isCustom = p[3].text.find('U') != std::string_view::npos;
  const bool isKept = name == "Visibility" || name == "Visibility Inheritance" ||
                      UserText::IsTextName(name) || (isCustom && UserText::Matters(name));
  if (!isKept) return;
  FbxProperty& property =
      into.objects.back().properties.emplace_back(FbxProperty{std::string(name), {}, {}});
  if (p[5].IsGiven()) return;  // several values
  if (p[4].isText)
    property.text = p[4].text;
  else
    property.number = p[4].number;
}

/// Takes the value of a shape key that was taken last: DeformPercent: 50.
void TakeShapeValue(const Statement& statement, FbxLinks& into) {
  if (statement.name != "DeformPercent" || into.objects.empty() ||
      into.objects.back().kind != FbxObject::Kind::kDeformer)
    return;
  into.objects.back().properties.push_back(
      {std::string(statement.name), {}, statement.properties[0].number});
}

/// Takes the matrix "Transform" of the cluster that was taken last: for row vectors, row by row.
void TakeBind(const MatrixNumbers& numbers, FbxLinks& into) {
  AffineMatrix& bind = into.objects.back().bind.emplace();
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 4; ++c) bind.rows[r][c] = numbers[c * 4 + r];
  }
}

bool IsCluster(const FbxLinks& links) {
  return !links.objects.empty() && links.objects.back().kind == FbxObject::Kind::kDeformer &&
         links.objects.back().className == "Cluster";
}

/// Takes what the statement of a section says; `text` is the whole file's. False when the statement
/// isn't what it has to be.
bool Take(Section section, const Statement& statement, std::string_view text, FbxLinks& into) {
  const auto& p = statement.properties;
  if (section == Section::kObjects) {
    const std::optional<FbxObject::Kind> kind = KindNamed(statement.name);
    if (!kind) return true;
    if (!p[0].integer) return false;
    into.objects.push_back(
        {*kind, *p[0].integer, std::string(NameWithoutClass(p[1].text)), std::string(p[2].text)});
  } else if (section == Section::kConnections && p[0].text == "OO") {
    if (!p[1].integer || !p[2].integer) return false;
    into.links.push_back(
        {*p[1].integer, *p[2].integer, static_cast<std::size_t>(p[0].text.data() - text.data())});
  }
  return true;
}

// --- ASCII ---

template <class T>
std::optional<T> NumberIn(std::string_view word) {
  T number{};
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  if (error != std::errc{} || end != word.data() + word.size()) return std::nullopt;
  return number;
}

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
      property.isText = true;
      property.text = line.substr(0, line.find('"'));
      line.remove_prefix(std::min(property.text.size() + 1, line.size()));
    } else {
      const std::string_view word = line.substr(0, line.find_first_of(" \t,{"));
      property.integer = NumberIn<std::int64_t>(word);
      property.number = NumberIn<double>(word);
      line.remove_prefix(word.size());
    }
  }
  return statement;
}

/// The numbers of the list "a: 1,0,..."; empty when there are more or fewer.
std::optional<MatrixNumbers> ParseMatrix(std::string_view line) {
  MatrixNumbers numbers{};
  for (double& number : numbers) {
    line.remove_prefix(std::min(line.find_first_of(":,"), line.size()));
    line.remove_prefix(std::min(line.find_first_not_of(":, \t"), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(", \t"));
    const std::optional<double> read = NumberIn<double>(word);
    if (!read) return std::nullopt;
    number = *read;
  }
  if (line.find(',') != std::string_view::npos) return std::nullopt;
  return numbers;
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
  bool hasKeptProperties = false;
  bool isBind = false;
  while (lines.Next()) {
    const std::string_view line = lines.Statement();
    if (line.starts_with(';')) continue;
    if (depth == 0) section = SectionNamed(line.substr(0, line.find(':')));
    if (depth == 1 && section != Section::kOther) {
      const Statement statement = ParseLine(line);
      if (!Take(section, statement, text, links)) return std::nullopt;
      hasKeptProperties = section == Section::kObjects && HasKeptProperties(statement.name);
    } else if (depth == 2 && hasKeptProperties) {
      isBind = line.starts_with("Transform:") && IsCluster(links);
      if (line.starts_with("DeformPercent")) TakeShapeValue(ParseLine(line), links);
    } else if (depth == 3 && isBind && line.starts_with("a:")) {
      if (const auto numbers = ParseMatrix(line)) TakeBind(*numbers, links);
    } else if (depth == 3 && hasKeptProperties && line.starts_with("P:")) {
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
    isWide_ = Number<std::uint32_t>() >= 7500;
  }

  std::optional<FbxLinks> Run() {
    while (const std::optional<Record> record = NextRecord(text_.size())) {
      const Section section = SectionNamed(record->statement.name);
      if (section != Section::kOther) {
        while (const std::optional<Record> inner = NextRecord(record->end)) {
          if (!Take(section, inner->statement, text_, links_)) return std::nullopt;
          if (section == Section::kObjects && HasKeptProperties(inner->statement.name)) {
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
    std::size_t properties = 0;
    std::size_t content = 0;  ///< where the records within it begin
    std::size_t end = 0;
  };

  void TakeProperties(const Record& object) {
    at_ = object.content;
    while (const std::optional<Record> list = NextRecord(object.end)) {
      TakeShapeValue(list->statement, links_);
      if (list->statement.name == "Transform" && IsCluster(links_)) TakeMatrix(*list);
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

  void TakeMatrix(const Record& record) {
    at_ = record.properties;
    MatrixNumbers numbers{};
    if (Number<char>() != 'd' || Number<std::uint32_t>() != numbers.size()) return;
    const auto encoding = Number<std::uint32_t>();
    if (encoding != 0 || Number<std::uint32_t>() != sizeof(numbers)) return;
    for (double& number : numbers) number = Number<double>();
    TakeBind(numbers, links_);
  }

  template <class T>
  T Number() {
    return NumberAt<T>(Bytes(sizeof(T)), 0).value_or(T{});
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
    return isWide_ ? Number<std::uint64_t>() : std::uint64_t{Number<std::uint32_t>()};
  }

  /// Empty at the record of zeros that ends a list, at `limit`, and where the file is damaged.
  std::optional<Record> NextRecord(std::size_t limit) {
    if (isDamaged_ || at_ >= limit) return std::nullopt;
    const std::uint64_t end = Offset();
    const std::uint64_t propertyCount = Offset();
    const std::uint64_t propertyBytes = Offset();
    Record record;
    record.statement.name = Bytes(Number<std::uint8_t>());
    const std::size_t properties = at_;
    if (end == 0) return std::nullopt;
    if (end < at_ || end > limit || propertyBytes > end - at_) isDamaged_ = true;
    for (std::size_t i = 0; i < std::min<std::uint64_t>(propertyCount, kMostProperties); ++i) {
      if (isDamaged_ || !ReadProperty(record.statement.properties[i])) break;
    }
    if (isDamaged_) return std::nullopt;
    record.properties = properties;
    record.content = properties + static_cast<std::size_t>(propertyBytes);
    record.end = static_cast<std::size_t>(end);
    return record;
  }

  static bool SetInteger(Property& property, std::int64_t value) {
    property.integer = value;
    property.number = static_cast<double>(value);
    return true;
  }

  /// False for a kind that nothing here needs, behind which no property is read.
  bool ReadProperty(Property& property) {
    switch (Number<char>()) {
      case 'L':
        return SetInteger(property, Number<std::int64_t>());
      case 'I':
        return SetInteger(property, Number<std::int32_t>());
      case 'Y':
        return SetInteger(property, Number<std::int16_t>());
      case 'C':
        return SetInteger(property, Number<std::int8_t>());
      case 'D':
        property.number = Number<double>();
        return true;
      case 'F':
        property.number = static_cast<double>(Number<float>());
        return true;
      case 'S':
        property.isText = true;
        property.text = Bytes(Number<std::uint32_t>());
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
