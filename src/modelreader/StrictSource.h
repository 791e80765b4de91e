// Feeds the reader's grammar with the bytes of a model file, turns faults into problems with their
// places, and goes on behind a fault where that makes sense.
#pragma once

#include <concepts>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include <mapexport/ModelReader.h>

#include "modelreader/Place.h"
#include "modelreader/ProblemList.h"
#include "system/PrintableText.h"

namespace mapexport {

/// Thrown, after the problem was added, when what follows can't be read.
struct Unreadable {};

class StrictSource : public reader::detail::Source<StrictSource> {
 public:
  StrictSource(reader::detail::Span bytes, reader::Layout layout, ProblemList& problems)
      : Source(bytes, layout), problems_(problems) {}

  /// Where reading is; null for the file itself.
  const Place* Here() const { return place_; }
  ProblemList& Problems() { return problems_; }

  // In place of those of reader::detail::Source.

  template <class... Values>
  void Tell(reader::Fault fault, std::uint64_t offset, const char* field, const Values&... values) {
    problems_.Add(fault, offset, At(field), Shown(values)...);
  }
  template <class... Values>
  void TellOfEntry(reader::Fault fault, std::uint64_t offset, const char* field,
                   std::uint64_t index, const Values&... values) {
    problems_.Add(fault, offset, At(field).At(index), Shown(values)...);
  }
  /// Adds nothing where the end is known to cut a record: that is in the list already.
  template <class... Values>
  void TellOfEnd(reader::Fault fault, std::uint64_t offset, const char* field,
                 const Values&... values) {
    if (!endCuts_) problems_.Add(fault, offset, At(field), values..., WhatEnds());
  }
  [[noreturn]] void GiveUp() { throw Unreadable{}; }
  bool Good() const { return true; }
  void IndicesCut(std::uint64_t offset, const char* field, std::uint32_t count);

  /// During its lifetime, fields are those of `place`.
  class Inside {
   public:
    Inside(StrictSource& source, const Place& place)
        : source_(source), old_(source.place_), place_(place) {
      source.place_ = &place_;
    }
    ~Inside() { source_.place_ = old_; }
    Inside(const Inside&) = delete;
    Inside& operator=(const Inside&) = delete;

   private:
    StrictSource& source_;
    const Place* old_;
    Place place_;
  };
  Inside Enter(const char* record) { return {*this, At(record)}; }
  template <class Record>
  Inside Enter(const char* list, std::uint32_t index) {
    return {*this, At(list).At(index)};
  }

  /// When the body does not take just the bytes that its size gives, or can't be read to its end,
  /// reading goes on where `isNext` finds what must follow the record: at the body's own end, or at
  /// the end that the size gives. Where it is at neither, this throws Unreadable.
  void Record(const char* field, const std::function<void()>& header,
              const std::function<void()>& body,
              const std::function<bool(std::uint64_t offset)>& isNext);

  // As in Source, with a warning of numbers that are not finite.
  float F32(const char* field);
  template <class T>
  reader::List<T> Take(std::uint32_t count, const char* field) {
    const reader::List<T> list = Source::Take<T>(count, field);
    if constexpr (reader::detail::Entry<T>::kFloats > 0) {
      WarnOfNotFinite(list.data(), count, reader::detail::Entry<T>::kFloats, field);
    }
    return list;
  }

 private:
  template <std::integral Number>
  static Number Shown(Number value) {
    return value;
  }
  static std::string Shown(std::string_view text) { return Quoted(text); }
  static std::string_view Shown(reader::Layout layout);
  static std::string Shown(reader::FaceFlag flags);

  Place At(std::string_view field) const {
    return place_ == nullptr ? Place(field) : Place(*place_, field);
  }
  /// What the bytes that may be read at the moment belong to.
  std::string WhatEnds() const { return whatEnds_ == nullptr ? "the file" : whatEnds_->Path(); }
  void ReadBody(const Place& record, std::uint64_t end, bool cuts,
                const std::function<void()>& body);
  void WarnOfNotFinite(const std::byte* data, std::uint64_t entries, std::uint64_t floatsEach,
                       const char* field);

  ProblemList& problems_;
  const Place* place_ = nullptr;
  const Place* whatEnds_ = nullptr;  ///< the record that ends at End(); null: the file
  bool endCuts_ = false;             ///< that record should be longer
};

}  // namespace mapexport
