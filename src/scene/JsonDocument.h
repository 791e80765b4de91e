// A JSON document that is walked once, and the lines that tell what is wrong with it.
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
/// JsonArray and JsonValue. Whatever is wrong ends the walk with a SceneError: broken JSON is told
/// with its line and column (counted in characters, from 1), a wrong value with its place.
///
/// The parser beneath is lazy and doesn't look at what it skips. Therefore each value that nobody
/// reads goes through CheckJsonValue, so that no broken document is taken for a sound one.
class JsonDocument {
 public:
  /// Throws what is wrong with the beginning of a text that goes on, when it is broken and no
  /// object begins there: a whole file of something else isn't worth reading.
  static void CheckBeginning(const std::string& file, std::string_view beginning);

  /// `text` is the file's, and must live as long as the document. `maxDepth` is the deepest nesting
  /// of arrays and objects that is going to be read; ignored members may be deeper. It is no limit.
  JsonDocument(const std::string& file, const FileText& text, std::size_t maxDepth);
  /// The same for a text that is no scene file's: none of its lists is parsed beforehand. `text`
  /// must live as long as the document.
  JsonDocument(const std::string& file, std::string_view text, std::size_t maxDepth);
  JsonDocument(const JsonDocument&) = delete;
  JsonDocument& operator=(const JsonDocument&) = delete;
  ~JsonDocument() = default;

  /// The document's members, to be read to the last one and then followed by End.
  simdjson::ondemand::object Start();
  /// Checks that nothing follows the object.
  void End();

  /// What the parser hands out; if it hands out an error, throws what is wrong with the text.
  template <class T>
  T Get(simdjson::simdjson_result<T> result) const {
    T value;
    if (const simdjson::error_code error = std::move(result).get(value)) FailSyntax(error);
    return value;
  }
  /// The list of a mesh that was parsed beforehand, and is not in the text that the parser sees: it
  /// has an empty array there, at `start`. Null where there is none. It may be moved from.
  template <class Element>
  std::vector<Element>* ParsedList(const char* start) {
    return lists_.ListAt<Element>(static_cast<std::size_t>(start - rest_.data()));
  }
  /// Runs a check of JsonSyntax.h on the text from `start` on, which is what the parser handed out.
  /// Returns what it found sound.
  std::string_view Check(JsonSyntax (*check)(std::string_view), const char* start) const;

  /// Throws the SceneError that says so about that place.
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
