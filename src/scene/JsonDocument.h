// A JSON document that is walked once, and the messages about its defects.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include <simdjson.h>

#include "scene/FileText.h"
#include "scene/JsonPlace.h"
#include "scene/JsonSyntax.h"
#include "scene/NumberLists.h"

namespace mapexport {

/// A JSON document, an object, to be walked once in the order of its text with JsonObject,
/// JsonArray and JsonValue. The first defect ends the walk with a SceneError: broken JSON with its
/// line and column (counted in characters, from 1), a wrong value with its place.
///
/// The parser is lazy and doesn't check what it skips. So each value that nobody reads goes through
/// CheckJsonValue; otherwise a broken document could pass for a sound one.
class JsonDocument {
 public:
  /// Throws the defect in `beginning`, the first part of a longer text, unless an object begins
  /// there. So a large file of another kind is refused before all of it is read.
  static void CheckBeginning(const std::string& file, std::string_view beginning);

  /// `text` must outlive the document. `maxDepth` is the deepest nesting of arrays and objects that
  /// will be read; ignored members may be nested deeper.
  JsonDocument(const std::string& file, const FileText& text, std::size_t maxDepth);
  /// The same for a text that is no scene file's: none of its lists is parsed beforehand. `text`
  /// must live as long as the document.
  JsonDocument(const std::string& file, std::string_view text, std::size_t maxDepth);
  /// The same with a text of its own, so that there is only one copy.
  JsonDocument(const std::string& file, std::string&& text, std::size_t maxDepth);
  JsonDocument(const JsonDocument&) = delete;
  JsonDocument& operator=(const JsonDocument&) = delete;
  ~JsonDocument() = default;

  /// The document's members. Read them to the last one, then call End.
  simdjson::ondemand::object Start();
  /// Checks that nothing follows the object.
  void End();

  /// The parser's result; throws the defect in the text when that is an error.
  template <class T>
  T Get(simdjson::simdjson_result<T> result) const {
    T value;
    if (const simdjson::error_code error = std::move(result).get(value)) FailSyntax(error);
    return value;
  }
  /// The list of a mesh that NumberLists has parsed; the parser sees an empty array in its place,
  /// at `start`. Null where there is none. It may be moved from.
  template <class Element>
  std::vector<Element>* ParsedList(const char* start) {
    return lists_.ListAt<Element>(static_cast<std::size_t>(start - rest_.data()));
  }
  /// Runs a check of JsonSyntax.h on the text from `start` on, which is what the parser handed out.
  /// Returns what it found sound.
  std::string_view Check(JsonSyntax (*check)(std::string_view), const char* start) const;

  /// Throws a SceneError with `message` about `place`.
  [[noreturn]] void Fail(const JsonPlace& place, std::string_view message) const;

 private:
  void StartParsing(std::size_t maxDepth);
  [[noreturn]] void FailSyntax(simdjson::error_code error) const;

  std::string file_;
  std::string_view text_;
  NumberLists lists_;
  std::string rest_;  // what the parser sees
  simdjson::ondemand::parser parser_;
  simdjson::ondemand::document document_;
};

}  // namespace mapexport
