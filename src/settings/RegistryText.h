// The registry-export text form: what its keys and values are and where in the bytes they stand.
//
// The form, in UTF-8 (a byte order mark may come first), with LF or CRLF line ends:
//
//   REGEDIT4                              the first line
//   ; a comment                           also behind a key or a value
//   [HKEY_LOCAL_MACHINE\Software\Maker]   a key; its values follow
//   [-HKEY_LOCAL_MACHINE\Software]        takes the key, and those below it, away again
//   "Name"="text"                         \\ and \" stand for \ and "; there is no other escape
//   "Name"=dword:0000002a                 a 32-bit number, 1 to 8 hexadecimal digits
//   "Name"=hex(1):63,3a,0a,00             a text as bytes
//   "Name"=hex:01,02                      another kind of value, as is hex(KIND): of other kinds
//   "Name"=-                              takes the value away again
//   @=...                                 the value without a name
//
// Texts that quotes can't hold, because of line ends or bytes that are not UTF-8, are written as
// bytes. A line of bytes that ends in \ goes on in the next. Blanks may stand around each part. Key
// and value names are the same when they differ only in the case of the letters A to Z. Of a
// repeated value the last one counts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace mapexport {

/// A text, without NUL, or a 32-bit number.
using RegistryValue = std::variant<std::string, std::uint32_t>;

struct RegistryText {
  /// A value's line or lines. Positions are byte positions in `bytes`.
  struct Entry {
    std::optional<RegistryValue> value;  ///< empty: of another kind, or taken away
    std::size_t begin = 0;               ///< first byte of what follows the "="
    std::size_t end = 0;                 ///< behind its last byte; blanks and comments lie outside
  };
  struct Key {
    std::size_t insertAt = 0;  ///< where a new value belongs: behind the line of the last one
    std::map<std::string, Entry, std::less<>> entries;  ///< by folded name
  };

  std::string bytes;                             ///< the whole text as it was read
  std::string lineEnd = "\n";                    ///< what ends the first line
  std::map<std::string, Key, std::less<>> keys;  ///< by folded name, "hkey_local_machine\..."

  /// The value of that key and name, null when there is none that is a text or a number.
  const RegistryValue* Find(std::string_view key, std::string_view name) const;
};

/// Reads the form. A text without any bytes is a registry that holds nothing yet. Throws
/// SettingsError with the number of the first line that is not of the form.
RegistryText ParseRegistryText(std::string bytes);

/// `name` with the letters A to Z lowered: names are the same when their folded forms are.
std::string FoldRegistryName(std::string_view name);

/// Whether a line can hold the name: it is UTF-8 and has neither NUL nor line ends.
bool IsRegistryName(std::string_view name);

}  // namespace mapexport
