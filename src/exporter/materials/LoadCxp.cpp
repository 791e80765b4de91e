#include "exporter/materials/LoadCxp.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <istream>
#include <memory>
#include <ostream>
#include <streambuf>
#include <string_view>
#include <system_error>

#include "exporter/base/DebugLog.h"
#include "exporter/base/NumberText.h"
#include "exporter/base/ProcessState.h"
#include "exporter/materials/ParseExceptions.h"
#include "exporter/materials/TextStreambuf.h"
#include "exporter/materials/Tokenizer.h"
#include "host/CStr.h"

namespace mapexport {
namespace {

/// An attribute of an entry, and the tokens that belong to it.
struct Attribute {
  std::string_view keyword;
  int arguments;     ///< tokens after the keyword
  bool list;         ///< after these, a count n and n tokens
  bool transparent;  ///< the entry's texture is transparent
};

constexpr std::array kAttributes = {
    Attribute{"colorkey", 3, false, true},  // three integers
    Attribute{"alphablend", 0, false, true},
    Attribute{"mipmap", 1, true, false},      // an integer, the list
    Attribute{"scrolling", 3, false, false},  // an integer, two reals
    Attribute{"animated", 2, true, false},    // an integer, a real, the list
    Attribute{"gunpass", 0, false, false},
    Attribute{"grenadepass", 0, false, false},
};

const char* RequireToken(Tokenizer& tokens) {
  if (!tokens.ReadToken()) throw KXParser::ReadException();
  return tokens.Token();
}

CStr RequireKeyword(Tokenizer& tokens) {
  CStr keyword = RequireToken(tokens);
  keyword.toLower();
  return keyword;
}

void SkipTokens(Tokenizer& tokens, int count) {
  for (int i = 0; i < count; ++i) RequireToken(tokens);
}

/// "Textures\Wall01.BMP" is "wall01". A "." in a directory's name counts when it is the last one,
/// and a forward slash is text.
CStr BaseName(CStr path) {
  path.toLower();
  if (const int dot = path.last('.'); dot >= 0) path.remove(dot);
  path.remove(0, path.last('\\') + 1);
  return path;
}

/// Reads what follows an entry's keyword, up to the entry's "end".
void ReadEntry(Tokenizer& tokens, TextureNames& transparentTextures) {
  const CStr name = BaseName(RequireToken(tokens));
  for (;;) {
    const CStr keyword = RequireKeyword(tokens);
    if (keyword == "end") return;
    const auto* const attribute =
        std::find_if(kAttributes.begin(), kAttributes.end(),
                     [&](const Attribute& a) { return a.keyword == keyword.View(); });
    if (attribute == kAttributes.end()) continue;  // a stray word
    // Even when the file breaks off within the arguments.
    if (attribute->transparent) transparentTextures.Append(name.View());
    SkipTokens(tokens, attribute->arguments);
    if (attribute->list) SkipTokens(tokens, LeadingInteger(RequireToken(tokens)));
  }
}

void ReadEntries(std::istream& input, TextureNames& transparentTextures) {
  Tokenizer tokens(input);
  while (input.good()) {
    const CStr keyword = RequireKeyword(tokens);
    if (keyword == "end") return;
    if (keyword == "material" || keyword == "surface") ReadEntry(tokens, transparentTextures);
  }
}

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// The bytes of a file. A read error is an exception; in std::filebuf of some standard libraries it
/// looks like the end of the file.
class FileStreambuf : public std::streambuf {
 public:
  explicit FileStreambuf(std::FILE& file) : file_(file) {}

 private:
  int_type underflow() override {
    const std::size_t count = std::fread(chunk_.data(), 1, chunk_.size(), &file_);
    if (std::ferror(&file_) != 0) throw std::ios_base::failure("the file can't be read");
    if (count == 0) return traits_type::eof();
    setg(chunk_.data(), chunk_.data(), chunk_.data() + count);
    return traits_type::to_int_type(*gptr());
  }

  std::FILE& file_;
  std::array<char, 4096> chunk_{};
};

File OpenForReading(const char* path) {
  // Opening or reading a pipe or a device may never end; some platforms can open a folder.
  std::error_code unknown;
  const std::filesystem::file_status status = std::filesystem::status(path, unknown);
  const bool isOther = std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
  return {isOther ? nullptr : std::fopen(path, "rb"), std::fclose};
}

bool ReadFile(const char* path, TextureNames& names) {
  const File file = OpenForReading(path);
  if (file == nullptr) return false;
  FileStreambuf bytes(*file);
  TextStreambuf text(bytes);
  std::istream input(&text);
  input.exceptions(std::ios::badbit);  // else a stream keeps the exception to itself
  try {
    ReadCxp(input, names);
  } catch (const std::ios::failure&) {
    return false;
  }
  return true;
}

}  // namespace

void ReadCxp(std::istream& input, TextureNames& transparentTextures) {
  // A database that breaks off counts up to there, silently.
  try {
    ReadEntries(input, transparentTextures);
  } catch (const KXParser::ReadException&) {
  } catch (const KXParser::TokenException&) {
  }
}

void LoadCxp() {
  const CStr& path = State().options.cxpFilename;
  TextureNames names;
  if (!ReadFile(path.data(), names)) {
    DebugLog& log = DebugLog::Instance();
    log.Line() << "Could not load CXP file " << path.data() << '\n' << std::flush;
    log.Emit();
    return;
  }
  TextureNames& transparent = State().transparentTextures;
  for (std::size_t i = 0; i < names.Count(); ++i) transparent.Append(names[i]);
}

}  // namespace mapexport
