// Collects what is wrong with a model file; holds the catalogue of the problems' sentences.
#pragma once

#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "modelreader/ModelProblem.h"
#include "modelreader/Place.h"

namespace mapexport {

/// Thrown when there are too many errors to go on.
struct StopReading {};

class ProblemList {
 public:
  /// After this many errors reading stops.
  static constexpr std::uint64_t kMaxErrors = 50;

  /// Adds a problem; `values` fill the sentence of its code, in order: numbers, or printable texts.
  /// Throws StopReading with the last error that is accepted.
  template <typename... Values>
  [[gnu::cold]] void Add(ModelProblemCode code, std::optional<std::uint64_t> offset,
                         const Place& place, const Values&... values) {
    AddSentence(code, offset, place, {Shown(values)...});
  }
  /// Adds a problem of the file as a whole.
  void AddToFile(ModelProblemCode code, std::string_view value = {}, std::string_view limit = {});
  /// Warns of `times` floats of one list that are not finite; `value` is the first of them, at
  /// `offset`, in `entry`. Each kind of list gets one warning, with the sum of the times.
  void AddNotFinite(std::uint64_t times, std::uint64_t offset, const Place& entry, float value);

  std::uint64_t Errors() const { return errors_; }

  /// Returns the problems. Call it last.
  std::vector<ModelProblem> Take();

 private:
  struct Repeated {
    std::size_t problem = 0;  ///< index into problems_
    std::uint64_t times = 0;
  };

  template <std::integral Number>
  static std::string Shown(Number value) {
    return std::to_string(value);
  }
  static std::string Shown(std::string_view text) { return std::string(text); }

  void AddSentence(ModelProblemCode code, std::optional<std::uint64_t> offset, const Place& place,
                   const std::vector<std::string>& values);

  std::vector<ModelProblem> problems_;
  std::uint64_t errors_ = 0;
  std::map<std::string, Repeated> notFinite_;  ///< by kind of place
};

}  // namespace mapexport
