// Reads the model files of mapexport in an engine: one header, C++17, the standard library only, no
// exceptions, no allocation.
//
//   using namespace mapexport::reader;
//   Model model;
//   Error error;
//   if (!model.Open(bytes, size, LayoutOfName(path), &error)) return Refuse(error);
//   for (const auto& group : model.groups) {
//     for (const auto& batch : group.batches) Upload(model.materials, group, batch);
//   }
//
// A large level can be divided into many groups (the export's option --split), so loop over all of
// them. Material indices are the file's, all others those of the group.
//
// Open checks the whole file once: tags, sizes within sizes, every count against the bytes that are
// left, every index against its list except the positions of drawn faces (see Group::faces). The
// model then refers to the bytes, which must stay unchanged; they need no alignment. Numbers are
// not checked: they may be NaN or infinite.
//
// A vertex buffer and an index buffer of a batch, for triangle lists. In a batch a vertex has the
// same corner in every triangle, so the vertex buffer has one entry for each vertex of the batch:
//
//   std::unordered_map<std::uint16_t, std::uint16_t> places;  // of vertices in the vertex buffer
//   for (std::uint32_t i = 0; i < 3 * batch.vertexIndices.size(); ++i) {
//     const std::uint16_t vertex = batch.vertexIndices[i / 3][i % 3];
//     const std::uint16_t corner = batch.cornerIndices[i / 3][i % 3];
//     const auto next = static_cast<std::uint16_t>(vertexBuffer.size());
//     const auto [place, isNew] = places.try_emplace(vertex, next);
//     if (isNew) {
//       vertexBuffer.push_back({group.vertices[vertex], batch.normals[corner],
//                               batch.textureCoordinates[corner], batch.colours[corner]});
//     }
//     indexBuffer.push_back(place->second);
//   }
//
// Axes: those of the export's option --coordinates, which the file does not record. Its default
// gives left-handed axes with y up; "inverse-max" left-handed with z up; "right-handed" and "max"
// right-handed with z up.
// Winding: the corners of a triangle are clockwise, seen from outside in these axes. Two-sided
// triangles are in the file twice, so cull back faces.
// Normals: point outward in left-handed axes, inward in right-handed ones.
// Units: those of the scene.
// Texture coordinates: by default v points down from the upper edge of the picture, the first row
// in memory; coordinates outside 0 to 1 repeat the picture. --texture-coordinates gives others.
//
// docs/format.md of mapexport describes the file and all its parts.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <optional>
#include <string_view>

/// Rises with every change of this header's public names.
#define MAPEXPORT_READER_VERSION 1

namespace mapexport::reader {

/// The two layouts of a group. The file does not record which of them it has; its name does.
enum class Layout { kQob, kKob };

/// The layout of a file with that name or path: kQob when it ends in ".qob", in any case, else
/// kKob.
inline Layout LayoutOfName(std::string_view name) {
  constexpr std::string_view kQobEnd = ".qob";
  if (name.size() < kQobEnd.size()) return Layout::kKob;
  name.remove_prefix(name.size() - kQobEnd.size());
  for (std::size_t i = 0; i < kQobEnd.size(); ++i) {
    const bool isUpper = name[i] >= 'A' && name[i] <= 'Z';
    if ((isUpper ? name[i] - 'A' + 'a' : name[i]) != kQobEnd[i]) return Layout::kKob;
  }
  return Layout::kQob;
}

/// Indices have 16 bits in the file: in a list with more entries than this, the index of a later
/// entry is cut to its low 16 bits.
inline constexpr std::uint64_t kIndexLimit = 65536;

/// The flags of surface sets, as the keywords of user properties name them.
enum FaceFlag : std::uint32_t {
  kClimbable = 0x01,
  kNotCollidable = 0x02,
  kNotRendered = 0x04,  ///< collision only: the faces are in no batch
  kNotCollidable3d = 0x08,
  kFloorFace = 0x10,
  kNotShownPlan = 0x20,
  k45PlusFloor = 0x40,
  kStaticNode = 0x80,  ///< the set of one "static" node, by whose name it is called
  kAllFaceFlags = 0xFF
};

struct Point {
  float x = 0;
  float y = 0;
  float z = 0;
};

/// The points p with normal * p + d = 0.
struct Plane {
  Point normal;
  float d = 0;
};

struct TextureCoordinates {
  float u = 0;
  float v = 0;
};

struct Colour {
  float r = 0;
  float g = 0;
  float b = 0;
  float a = 0;
};

/// Three indices, one for each corner of a triangle.
using Triple = std::array<std::uint16_t, 3>;

/// One triangle of a group's face table.
struct Face {
  /// Into the group's vertices for a drawn face, into its collision points for an undrawn one.
  Triple vertices{};
  /// Place in the batch's faces for a drawn face, in the group's planes for an undrawn one.
  std::uint16_t position = 0;
  std::uint32_t surfaceSet = 0;  ///< into the group's surfaceSets
  std::int32_t batch = -1;       ///< into the group's batches; -1: the face is not drawn
};

namespace detail {

struct Span {
  const std::byte* data = nullptr;
  std::size_t size = 0;
};

template <class T>
struct Entry;

/// What `->` gives of an iterator that makes its values.
template <class T>
struct Arrow {
  T value;
  const T* operator->() const { return &value; }
};

}  // namespace detail

/// A list of entries of equal size, read in place. It is a view: copies are cheap and refer to the
/// same list.
template <class T>
class List {
 public:
  /// Bytes of an entry.
  static constexpr std::uint32_t kStride = sizeof(T);

  List() = default;
  List(const std::byte* data, std::uint32_t size) : data_(data), size_(size) {}

  std::uint32_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  /// Entry `index`; beyond the end, an entry of zeros.
  T operator[](std::size_t index) const {
    return index < size_ ? detail::Entry<T>::At(data_ + index * kStride) : T{};
  }
  /// The first entry; of an empty list, an entry of zeros.
  T front() const { return (*this)[0]; }
  /// The entries as they are in the file: kStride bytes each, little-endian, unaligned. On a
  /// little-endian machine they may be copied over an array of T.
  const std::byte* data() const { return data_; }

  /// Makes an entry of the bytes at each access. A random access iterator by the concepts of C++20;
  /// by older rules an input iterator, as it gives no references.
  class Iterator {
   public:
    using iterator_concept = std::random_access_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = detail::Arrow<T>;
    using reference = T;

    Iterator() = default;
    explicit Iterator(const std::byte* entry) : entry_(entry) {}

    T operator*() const { return detail::Entry<T>::At(entry_); }
    pointer operator->() const { return {**this}; }
    T operator[](difference_type n) const { return *(*this + n); }

    Iterator& operator+=(difference_type n) {
      entry_ += n * kStep;
      return *this;
    }
    Iterator& operator-=(difference_type n) { return *this += -n; }
    Iterator& operator++() { return *this += 1; }
    Iterator& operator--() { return *this -= 1; }
    Iterator operator++(int) {
      const Iterator old = *this;
      ++*this;
      return old;
    }
    Iterator operator--(int) {
      const Iterator old = *this;
      --*this;
      return old;
    }
    friend Iterator operator+(Iterator it, difference_type n) { return it += n; }
    friend Iterator operator+(difference_type n, Iterator it) { return it += n; }
    friend Iterator operator-(Iterator it, difference_type n) { return it -= n; }
    friend difference_type operator-(Iterator a, Iterator b) {
      return (a.entry_ - b.entry_) / kStep;
    }
    friend bool operator==(Iterator a, Iterator b) { return a.entry_ == b.entry_; }
    friend bool operator!=(Iterator a, Iterator b) { return !(a == b); }
    friend bool operator<(Iterator a, Iterator b) { return a - b < 0; }
    friend bool operator>(Iterator a, Iterator b) { return b < a; }
    friend bool operator<=(Iterator a, Iterator b) { return !(b < a); }
    friend bool operator>=(Iterator a, Iterator b) { return !(a < b); }

   private:
    static constexpr difference_type kStep = kStride;
    const std::byte* entry_ = nullptr;
  };
  Iterator begin() const { return Iterator(data_); }
  Iterator end() const { return begin() + size_; }

 private:
  const std::byte* data_ = nullptr;
  std::uint32_t size_ = 0;
};

/// Records of different sizes, one behind the other. It is a view, like List.
template <class Record>
class Records {
 public:
  Records() = default;
  Records(detail::Span bytes, Layout layout, std::uint32_t size)
      : bytes_(bytes), layout_(layout), size_(size) {}

  std::uint32_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  /// Record `index`; beyond the end, an empty record. It passes all records before it: to get every
  /// record, iterate.
  Record operator[](std::size_t index) const {
    if (index >= size_) return {};
    Iterator it = begin();
    while (index-- > 0) ++it;
    return *it;
  }
  /// The first record; of none, an empty one.
  Record front() const { return (*this)[0]; }

  /// Holds the record that it is at. A forward iterator by the concepts of C++20.
  class Iterator {
   public:
    using iterator_concept = std::forward_iterator_tag;
    using iterator_category = std::input_iterator_tag;
    using value_type = Record;
    using difference_type = std::ptrdiff_t;
    using pointer = const Record*;
    using reference = Record;

    Iterator() = default;
    Iterator(detail::Span rest, Layout layout, std::uint32_t left)
        : rest_(rest), layout_(layout), left_(left) {
      if (left_ > 0) LoadRecord(rest_, layout_, record_);
    }
    Record operator*() const { return record_; }
    /// Valid until the iterator moves on or goes away.
    pointer operator->() const { return &record_; }
    Iterator& operator++() {
      if (--left_ > 0) LoadRecord(rest_, layout_, record_);
      return *this;
    }
    Iterator operator++(int) {
      const Iterator old = *this;
      ++*this;
      return old;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) { return a.left_ == b.left_; }
    friend bool operator!=(const Iterator& a, const Iterator& b) { return !(a == b); }

   private:
    detail::Span rest_;  ///< behind the record
    Layout layout_ = Layout::kKob;
    std::uint32_t left_ = 0;  ///< records from this one on
    Record record_;
  };
  Iterator begin() const { return {bytes_, layout_, size_}; }
  Iterator end() const { return {}; }

 private:
  detail::Span bytes_;
  Layout layout_ = Layout::kKob;
  std::uint32_t size_ = 0;
};

/// What every record begins with. Texts are bytes of any encoding, without a NUL.
struct Header {
  std::uint32_t typeCode = 0;
  std::uint32_t version = 0;
  std::string_view name;
};

struct Material {
  Header header;
  std::string_view textureName;  ///< "NULL" without a texture
  float scalar1 = 0;
  float scalar2 = 0;
  float scalar3 = 0;
  std::int32_t modeValue = 0;
  Colour ambient;
  Colour diffuse;
  Colour specular;
  bool twoSided = false;

  /// Whether textureName is a picture's: a texture whose path had no file name has an empty one.
  bool HasTexture() const { return textureName != "NULL" && !textureName.empty(); }
};

/// Triangles of one material; planes, vertexIndices and cornerIndices have an entry for each, and
/// normals, textureCoordinates and colours one for each corner of the batch.
struct Batch {
  std::int32_t material = -1;  ///< into the model's materials, -1 for none
  List<Plane> planes;
  List<Triple> vertexIndices;  ///< into the group's vertices
  List<Triple> cornerIndices;  ///< into the three lists below
  List<Point> normals;
  List<TextureCoordinates> textureCoordinates;
  List<Colour> colours;
};

struct SurfaceSet {
  std::string_view name;
  std::uint32_t flags = 0;    ///< a sum of FaceFlags
  List<std::uint16_t> faces;  ///< into the group's faces
};

struct Group {
  Header header;
  List<Point> vertices;
  Records<Batch> batches;

  // Only in the layout kKob; empty in the other.
  Header outerHeader;
  List<Point> collisionPoints;
  List<Plane> planes;
  /// Open makes sure of all indices in them but the positions of drawn faces, which would take the
  /// sizes of all batches at once.
  List<Face> faces;
  Records<SurfaceSet> surfaceSets;
};

/// What is wrong with a file.
enum class Fault {
  kNone,
  kNoStartTag,     ///< the file does not begin with the text "BeginModel"
  kNoEndTag,       ///< the text "EndModel" does not follow the last group
  kAfterEndTag,    ///< bytes follow the text "EndModel"
  kChunkId,        ///< a chunk has another id than the one that must be here
  kChunkName,      ///< a chunk has another name than the one that must be here
  kCut,            ///< a value goes on past the end of the file, or of the record that it is in
  kCountTooLarge,  ///< a list has more entries than bytes are left for
  kSizeTooLarge,   ///< a record goes on past the end of the file, or of the record around it
  kSizeLeftOver,   ///< a record takes fewer bytes than its size says
  kTextEmpty,      ///< a text has the length 0, but the length counts the NUL at its end
  kTextNoEnd,      ///< a text does not end with a NUL
  kTextNul,        ///< a text has a NUL before its end
  kTypeCode,       ///< a record is of another kind than the one that must be here
  kVersionText,    ///< a header lacks the text "Version"
  kVersion,        ///< a record has a version that this reader does not know
  kBool,           ///< a byte that is true or false is neither 1 nor 0
  kOuterName,      ///< the two records of a group have different names
  kOtherLayout,    ///< the file has the layout that was not asked for
  kBatchEmpty,     ///< a batch has no faces or no corners
  kSetFlags,       ///< a surface set has flags that are no FaceFlag
  kMaterialIndex,  ///< a batch has a material that the file does not have
  kVertexIndex,    ///< a batch has a vertex that the group does not have
  kCornerIndex,    ///< a triangle has a corner that its batch does not have
  kFaceTable       ///< an index in a group's faces or surface sets leads out of its list
};

/// A few words that say what is wrong.
const char* ToText(Fault fault);

/// The first thing that is wrong with a file.
struct Error {
  Fault fault = Fault::kNone;
  std::uint64_t offset = 0;  ///< byte of the file
  const char* field = "";    ///< what is there: a name of docs/inspect-json.md

  // The records that it is in, by their indices; -1: in none of that kind.
  std::int32_t material = -1;
  std::int32_t group = -1;
  std::int32_t batch = -1;       ///< of the group
  std::int32_t surfaceSet = -1;  ///< of the group
};

/// A model file.
class Model {
 public:
  /// Checks `size` bytes and makes them accessible. When they are no sound file of that layout, it
  /// returns false with the first fault in `error`, and the model is empty. Time is linear in size.
  bool Open(const void* bytes, std::size_t size, Layout layout, Error* error = nullptr);

  Records<Material> materials;
  Records<Group> groups;
  /// Whether some list is longer than kIndexLimit, so that indices into it may be wrong.
  bool indicesAreCut = false;
};

// --- implementation; nothing below is meant to be used by name -----------------------------------

namespace detail {

struct FaultText {
  Fault fault;
  const char* text;
  const char* sentence;  ///< says more, with the values that a Source is told: {0}, {1}, ...
};

/// A row for each Fault, in the same order.
inline constexpr FaultText kFaultTexts[] = {
    {Fault::kNone, "nothing is wrong", ""},
    {Fault::kNoStartTag, "the text \"BeginModel\" is missing: this is no model file",
     "must be the text \"BeginModel\": this is no model file"},
    {Fault::kNoEndTag, "the text \"EndModel\" is missing", "must be the text \"EndModel\""},
    {Fault::kAfterEndTag, "there are bytes behind the end", "bytes left over behind it: {0}"},
    {Fault::kChunkId, "the chunk has the wrong id", "is {0}, must be {1}"},
    {Fault::kChunkName, "the chunk has the wrong name", "is {0}, must be {1}"},
    {Fault::kCut, "the bytes end too early", "needs {0} bytes, but {1} are left in {2}"},
    {Fault::kCountTooLarge, "more entries are counted than bytes are left",
     "{0} entries of at least {1} bytes are counted, but {2} bytes are left in {3}"},
    {Fault::kSizeTooLarge, "the size is larger than what is left",
     "is {0}, but {1} bytes are left in {2}"},
    {Fault::kSizeLeftOver, "the size is not what the record takes",
     "is {0}, but what it counts takes {1} bytes"},
    {Fault::kTextEmpty, "the text has the length 0",
     "has the length 0; the least is 1, which counts the closing NUL"},
    {Fault::kTextNoEnd, "the text does not end with a NUL",
     "its {0} bytes must end with a NUL, but the last is {1}"},
    {Fault::kTextNul, "the text has a NUL before its end",
     "byte {0} of its {1} is a NUL; only the last may be one"},
    {Fault::kTypeCode, "the record is of another kind", "is {0}, must be {1}"},
    {Fault::kVersionText, "the header lacks the text \"Version\"", "is {0}, must be {1}"},
    {Fault::kVersion, "the record has an unknown version", "is {0}, must be {1}"},
    {Fault::kBool, "neither 0 nor 1", "is {0}, must be 0 or 1"},
    {Fault::kOuterName, "the group's two records have different names",
     "is {0}, but the record inside is named {1}"},
    {Fault::kOtherLayout, "the file has the other layout",
     "is {0}, as in the layout {1}; the file is read in the layout {2}"},
    {Fault::kBatchEmpty, "a batch without entries", "has no entries; a batch has at least one"},
    {Fault::kSetFlags, "unknown flags", "is {0}, must be a sum of flags from {1}"},
    {Fault::kMaterialIndex, "the file has no such material",
     "is {0}, but the file has {1} materials (-1 is none)"},
    {Fault::kVertexIndex, "the group has no such vertex",
     "corner {0} is vertex {1}, but the group has {2} vertices"},
    {Fault::kCornerIndex, "the batch has no such corner",
     "corner {0} is entry {1}, but the batch has {2} corners"},
    {Fault::kFaceTable, "an index leads out of its list", "an index leads out of its list"},
};

constexpr bool EveryFaultHasItsText() {
  std::size_t row = 0;
  for (const FaultText& text : kFaultTexts) {
    if (static_cast<std::size_t>(text.fault) != row++) return false;
  }
  return row == static_cast<std::size_t>(Fault::kFaceTable) + 1;
}
static_assert(EveryFaultHasItsText());

constexpr const FaultText& TextOf(Fault fault) {
  return kFaultTexts[static_cast<std::size_t>(fault)];
}

inline std::uint16_t U16At(const std::byte* bytes) {
  return static_cast<std::uint16_t>(std::to_integer<unsigned>(bytes[0]) |
                                    std::to_integer<unsigned>(bytes[1]) << 8);
}

inline std::uint32_t U32At(const std::byte* bytes) {
  return std::to_integer<std::uint32_t>(bytes[0]) | std::to_integer<std::uint32_t>(bytes[1]) << 8 |
         std::to_integer<std::uint32_t>(bytes[2]) << 16 |
         std::to_integer<std::uint32_t>(bytes[3]) << 24;
}

inline float F32At(const std::byte* bytes) {
  const std::uint32_t bits = U32At(bytes);
  float value = 0;
  static_assert(sizeof value == sizeof bits, "floats have 32 bits");
  std::memcpy(&value, &bits, sizeof value);
  return value;
}

/// How a list's entry is read, and how many floats it has if it has nothing else. It has the same
/// size in memory as in the file.
template <class T>
struct Entry;

template <>
struct Entry<Point> {
  static constexpr std::uint32_t kFloats = 3;
  static Point At(const std::byte* bytes) {
    return {F32At(bytes), F32At(bytes + 4), F32At(bytes + 8)};
  }
};

template <>
struct Entry<Plane> {
  static constexpr std::uint32_t kFloats = 4;
  static Plane At(const std::byte* bytes) { return {Entry<Point>::At(bytes), F32At(bytes + 12)}; }
};

template <>
struct Entry<TextureCoordinates> {
  static constexpr std::uint32_t kFloats = 2;
  static TextureCoordinates At(const std::byte* bytes) { return {F32At(bytes), F32At(bytes + 4)}; }
};

template <>
struct Entry<Colour> {
  static constexpr std::uint32_t kFloats = 4;
  static Colour At(const std::byte* bytes) {
    return {F32At(bytes), F32At(bytes + 4), F32At(bytes + 8), F32At(bytes + 12)};
  }
};

template <>
struct Entry<std::uint16_t> {
  static constexpr std::uint32_t kFloats = 0;
  static std::uint16_t At(const std::byte* bytes) { return U16At(bytes); }
};

template <>
struct Entry<Triple> {
  static constexpr std::uint32_t kFloats = 0;
  static Triple At(const std::byte* bytes) {
    return {U16At(bytes), U16At(bytes + 2), U16At(bytes + 4)};
  }
};

template <>
struct Entry<Face> {
  static constexpr std::uint32_t kFloats = 0;
  static Face At(const std::byte* bytes) {
    return {Entry<Triple>::At(bytes), U16At(bytes + 6), U32At(bytes + 8),
            static_cast<std::int32_t>(U32At(bytes + 12))};
  }
};

static_assert(sizeof(Point) == 12 && sizeof(Plane) == 16 && sizeof(TextureCoordinates) == 8 &&
                  sizeof(Colour) == 16 && sizeof(Triple) == 6 && sizeof(Face) == 16,
              "List::kStride is the size in the file");

/// Decodes values from a file's bytes, up to the current end. `In` is the class that derives from
/// it. The grammar below calls the operations of `In`, so an operation that `In` declares replaces
/// the one of this class. This class stops at the first fault and keeps it.
template <class In>
class Source {
 public:
  Source(Span bytes, Layout layout) : bytes_(bytes), end_(bytes.size), layout_(layout) {}
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  // Handling of faults.

  /// A value is wrong. `values` go into the fault's sentence.
  template <class... Values>
  void Tell(Fault fault, std::uint64_t offset, const char* field, const Values&...) {
    if (!Good()) return;
    error_ = here_;
    error_.fault = fault;
    error_.offset = offset;
    error_.field = field;
    SetEnd(Offset());  // nothing is left to be read
  }
  /// Entry `index` of a list is wrong.
  template <class... Values>
  void TellOfEntry(Fault fault, std::uint64_t offset, const char* field, std::uint64_t /*index*/,
                   const Values&... values) {
    Self().Tell(fault, offset, field, values...);
  }
  /// There are too few bytes. The sentence's last value, after `values`, is what ends.
  template <class... Values>
  void TellOfEnd(Fault fault, std::uint64_t offset, const char* field, const Values&... values) {
    Self().Tell(fault, offset, field, values...);
  }
  /// Called after these where the bytes behind the fault can't be understood.
  void GiveUp() {}
  /// Whether reading goes on.
  bool Good() const { return error_.fault == Fault::kNone; }
  const Error& FirstError() const { return error_; }

  /// Whether indices are compared with the lengths of their lists.
  bool ChecksIndices() const { return true; }
  /// A list is too long for its indices.
  void IndicesCut(std::uint64_t /*offset*/, const char* /*field*/, std::uint32_t /*count*/) {
    indicesAreCut_ = true;
  }
  bool HasCutIndices() const { return indicesAreCut_; }

  // Records.

  /// During its lifetime, what is read belongs to one entry of a list.
  class Entered {
   public:
    Entered(std::int32_t& place, std::uint32_t index) : place_(place) {
      place = static_cast<std::int32_t>(index);
    }
    ~Entered() { place_ = -1; }
    Entered(const Entered&) = delete;
    Entered& operator=(const Entered&) = delete;

   private:
    std::int32_t& place_;
  };
  struct Nowhere {};

  /// Enters an object, or entry `index` of a list of records, for the lifetime of the returned
  /// value.
  Nowhere Enter(const char* /*object*/) { return {}; }
  template <class Kind>
  Entered Enter(const char* /*list*/, std::uint32_t index) {
    return {PlaceOf(static_cast<const Kind*>(nullptr)), index};
  }

  /// A size, and what `header` and `body` read; the size counts the body. isNext(offset) tells
  /// whether what must follow the record is at `offset`; `field` is its name, null for none.
  template <class ReadHeader, class ReadBody, class IsNext>
  void Record(const char* /*field*/, const ReadHeader& header, const ReadBody& body,
              const IsNext& /*isNext*/) {
    const std::uint64_t sizeOffset = offset_;
    const std::uint32_t size = Self().U32("size");
    header();
    if (size > Left()) Self().TellOfEnd(Fault::kSizeTooLarge, sizeOffset, "size", size, Left());
    if (!Self().Good()) return;
    const std::uint64_t outerEnd = end_;
    const std::uint64_t recordEnd = offset_ + size;
    SetEnd(recordEnd);
    body();
    if (Self().Good() && offset_ != recordEnd) {
      Self().Tell(Fault::kSizeLeftOver, sizeOffset, "size", size, offset_ + size - recordEnd);
    }
    if (Self().Good()) SetEnd(outerEnd);
  }

  // The bytes.

  Layout FileLayout() const { return layout_; }
  std::uint64_t Offset() const { return offset_; }
  std::uint64_t End() const { return end_; }
  std::uint64_t Left() const { return end_ - offset_; }
  /// Where in the file `data`, a list of it, begins.
  std::uint64_t OffsetOf(const std::byte* data) const {
    return static_cast<std::uint64_t>(data - bytes_.data);
  }
  Span Rest() const { return {bytes_.data + offset_, static_cast<std::size_t>(Left())}; }

  /// Whether the number, or the text with its length, is at `offset` of the file.
  bool StandsAt(std::uint64_t offset, std::uint32_t number) const {
    return offset <= bytes_.size && bytes_.size - offset >= 4 &&
           U32At(bytes_.data + offset) == number;
  }
  bool StandsAt(std::uint64_t offset, std::string_view text) const {
    const std::uint64_t length = text.size() + 1;
    if (!StandsAt(offset, static_cast<std::uint32_t>(length))) return false;
    const std::byte* const stored = bytes_.data + offset + 4;
    return bytes_.size - offset - 4 >= length &&
           std::memcmp(stored, text.data(), text.size()) == 0 &&
           stored[text.size()] == std::byte{0};
  }

  /// The next `count` bytes; null when there are fewer.
  const std::byte* Bytes(std::uint64_t count, const char* field) {
    if (count > Left()) {
      Self().TellOfEnd(Fault::kCut, offset_, field, count, Left());
      Self().GiveUp();
      return nullptr;
    }
    const std::byte* const taken = bytes_.data + offset_;
    offset_ += count;
    return taken;
  }

  std::uint32_t U32(const char* field) {
    const std::byte* const bytes = Bytes(4, field);
    return bytes == nullptr ? 0 : U32At(bytes);
  }
  std::int32_t I32(const char* field) { return static_cast<std::int32_t>(U32(field)); }
  float F32(const char* field) {
    const std::byte* const bytes = Bytes(4, field);
    return bytes == nullptr ? 0 : F32At(bytes);
  }
  bool Bool(const char* field) {
    const std::byte* const bytes = Bytes(1, field);
    if (bytes == nullptr) return false;
    const auto value = std::to_integer<unsigned>(*bytes);
    if (value > 1) Self().Tell(Fault::kBool, offset_ - 1, field, value);
    return value != 0;
  }

  /// A length, which counts the closing NUL, and the text. One with a NUL inside is read up to it.
  std::string_view Text(const char* field) {
    const std::uint64_t start = offset_;
    const std::uint32_t length = U32(field);
    if (length == 0) {
      Self().Tell(Fault::kTextEmpty, start, field);
      Self().GiveUp();
      return {};
    }
    const std::byte* const bytes = Bytes(length, field);
    if (bytes == nullptr) return {};
    const auto last = std::to_integer<unsigned>(bytes[length - 1]);
    if (last != 0) {
      Self().Tell(Fault::kTextNoEnd, offset_ - 1, field, length, last);
      Self().GiveUp();
      return {};
    }
    const std::string_view text(reinterpret_cast<const char*>(bytes));
    if (text.size() + 1 != length) {
      Self().Tell(Fault::kTextNul, start + 4 + text.size(), field, text.size(), length);
    }
    return text;
  }

  /// The count of a list whose entries take at least `entryBytes` each; 0 when that is more than
  /// there is.
  std::uint32_t Count(std::uint64_t entryBytes, const char* field) {
    const std::uint64_t start = offset_;
    const std::uint32_t count = U32(field);
    if (count <= Left() / entryBytes) return count;
    Self().TellOfEnd(Fault::kCountTooLarge, start, field, count, entryBytes, Left());
    Self().GiveUp();
    return 0;
  }

  template <class T>
  List<T> Take(std::uint32_t count, const char* field) {
    const std::byte* const bytes = Bytes(std::uint64_t{count} * List<T>::kStride, field);
    return bytes == nullptr ? List<T>() : List<T>(bytes, count);
  }

 protected:
  void Seek(std::uint64_t offset) { offset_ = offset; }
  void SetEnd(std::uint64_t end) { end_ = end; }

 private:
  In& Self() { return static_cast<In&>(*this); }

  std::int32_t& PlaceOf(const Material*) { return here_.material; }
  std::int32_t& PlaceOf(const Group*) { return here_.group; }
  std::int32_t& PlaceOf(const Batch*) { return here_.batch; }
  std::int32_t& PlaceOf(const SurfaceSet*) { return here_.surfaceSet; }

  Span bytes_;
  std::uint64_t offset_ = 0;
  std::uint64_t end_;
  Layout layout_;
  Error here_;  ///< which records reading is in; no fault
  Error error_;
  bool indicesAreCut_ = false;
};

// The file's grammar, for every Source.

inline constexpr std::string_view kVersionWord = "Version";
inline constexpr std::uint32_t kMaterialType = 2;
inline constexpr std::uint32_t kMaterialVersion = 1;
inline constexpr std::uint32_t kQobType = 3;
inline constexpr std::uint32_t kKobType = 35;
inline constexpr std::uint32_t kGroupVersion = 2;

// Fewest bytes that records take: a size, and a header with an empty name, before the body.
inline constexpr std::uint64_t kLeastHeaderBytes = 4 + 4 + 12 + 4 + 5;
inline constexpr std::uint64_t kLeastMaterialBytes = kLeastHeaderBytes + 5 + 12 + 48 + 4 + 1;
inline constexpr std::uint64_t kLeastQobBytes = kLeastHeaderBytes + 4 + 4;
inline constexpr std::uint64_t kLeastKobBytes = kLeastHeaderBytes + kLeastQobBytes + 4 * 4;
inline constexpr std::uint64_t kLeastBatchBytes = 4 + 4 + 4;
inline constexpr std::uint64_t kLeastSetBytes = 5 + 4 + 4;
inline constexpr std::uint64_t kBatchFaceBytes = List<Plane>::kStride + 2 * List<Triple>::kStride;
inline constexpr std::uint64_t kCornerBytes =
    List<Point>::kStride + List<TextureCoordinates>::kStride + List<Colour>::kStride;

struct Chunk {
  const char* field;
  std::uint32_t id;
  std::string_view name;
};
inline constexpr std::string_view kStartTag = "BeginModel";
inline constexpr std::string_view kEndTag = "EndModel";
inline constexpr Chunk kMaterialChunk{"materialChunk", 8, "MaterialList"};
inline constexpr Chunk kGeometryChunk{"geometryChunk", 7, "GeometryList"};

template <class In>
bool RecordStandsAt(const In& in, std::uint64_t offset, std::uint32_t typeCode) {
  return in.StandsAt(offset + 4, typeCode) && in.StandsAt(offset + 8, kVersionWord);
}

template <class In>
void ReadHeader(In& in, std::uint32_t typeCode, std::uint32_t version, Header& header) {
  std::uint64_t offset = in.Offset();
  header.typeCode = in.U32("typeCode");
  if (header.typeCode != typeCode) {
    in.Tell(Fault::kTypeCode, offset, "typeCode", header.typeCode, typeCode);
  }
  offset = in.Offset();
  const std::string_view word = in.Text("versionText");
  if (word != kVersionWord) in.Tell(Fault::kVersionText, offset, "versionText", word, kVersionWord);
  offset = in.Offset();
  header.version = in.U32("version");
  if (header.version != version) {
    in.Tell(Fault::kVersion, offset, "version", header.version, version);
  }
  header.name = in.Text("name");
}

template <class In>
Colour ReadColour(In& in, const char* field) {
  Colour colour;
  colour.r = in.F32(field);
  colour.g = in.F32(field);
  colour.b = in.F32(field);
  colour.a = in.F32(field);
  return colour;
}

template <class In, class IsNext>
void ReadMaterial(In& in, Material& material, const IsNext& isNext) {
  const auto body = [&] {
    material.textureName = in.Text("textureName");
    material.scalar3 = in.F32("scalar3");
    material.scalar2 = in.F32("scalar2");
    material.modeValue = in.I32("modeValue");
    material.ambient = ReadColour(in, "ambient");
    material.diffuse = ReadColour(in, "diffuse");
    material.specular = ReadColour(in, "specular");
    material.scalar1 = in.F32("scalar1");
    material.twoSided = in.Bool("twoSided");
  };
  in.Record(
      nullptr, [&] { ReadHeader(in, kMaterialType, kMaterialVersion, material.header); }, body,
      isNext);
}

/// The count of a list that 16-bit indices address.
template <class In>
std::uint32_t ReadIndexedCount(In& in, std::uint64_t entryBytes, const char* field) {
  const std::uint64_t offset = in.Offset();
  const std::uint32_t count = in.Count(entryBytes, field);
  if (count > kIndexLimit) in.IndicesCut(offset, field, count);
  return count;
}

/// A fault for each index that is none into a list of `count`. When `count` is kIndexLimit or more,
/// every index is possible.
template <class In>
void CheckIndices(In& in, const List<Triple>& list, std::uint64_t count, Fault fault,
                  const char* field) {
  if (count >= kIndexLimit || !in.ChecksIndices()) return;
  for (std::uint32_t i = 0; i < list.size() && in.Good(); ++i) {
    const Triple triple = list[i];
    for (std::size_t k = 0; k < triple.size(); ++k) {
      if (triple[k] < count) continue;
      const std::uint64_t offset =
          in.OffsetOf(list.data()) + std::uint64_t{i} * List<Triple>::kStride + 2 * k;
      in.TellOfEntry(fault, offset, field, i, k, triple[k], count);
    }
  }
}

template <class In>
void ReadBatch(In& in, std::optional<std::uint32_t> materialCount, std::uint32_t vertexCount,
               Batch& batch) {
  const auto checkNotEmpty = [&in](std::uint32_t count, const char* field) {
    if (count == 0) in.Tell(Fault::kBatchEmpty, in.Offset() - 4, field);
  };
  batch.material = in.I32("material");
  if (materialCount && (batch.material < -1 || batch.material >= std::int64_t{*materialCount})) {
    in.Tell(Fault::kMaterialIndex, in.Offset() - 4, "material", batch.material, *materialCount);
  }

  // Only the face table of the second layout refers to the faces.
  const std::uint32_t faces = in.FileLayout() == Layout::kKob
                                  ? ReadIndexedCount(in, kBatchFaceBytes, "faces")
                                  : in.Count(kBatchFaceBytes, "faces");
  if (!in.Good()) return;
  checkNotEmpty(faces, "faces");
  batch.planes = in.template Take<Plane>(faces, "planes");
  batch.vertexIndices = in.template Take<Triple>(faces, "vertexIndices");
  batch.cornerIndices = in.template Take<Triple>(faces, "cornerIndices");
  CheckIndices(in, batch.vertexIndices, vertexCount, Fault::kVertexIndex, "vertexIndices");

  const std::uint32_t corners = ReadIndexedCount(in, kCornerBytes, "corners");
  if (!in.Good()) return;
  checkNotEmpty(corners, "corners");
  CheckIndices(in, batch.cornerIndices, corners, Fault::kCornerIndex, "cornerIndices");
  batch.normals = in.template Take<Point>(corners, "normals");
  batch.textureCoordinates = in.template Take<TextureCoordinates>(corners, "textureCoordinates");
  batch.colours = in.template Take<Colour>(corners, "colours");
}

template <class In>
void ReadSurfaceSet(In& in, SurfaceSet& set) {
  set.name = in.Text("name");
  set.flags = in.U32("flags");
  if ((set.flags & ~std::uint32_t{kAllFaceFlags}) != 0) {
    in.Tell(Fault::kSetFlags, in.Offset() - 4, "flags", FaceFlag{set.flags}, kAllFaceFlags);
  }
  set.faces =
      in.template Take<std::uint16_t>(in.Count(List<std::uint16_t>::kStride, "faces"), "faces");
}

template <class T, class In>
List<T> ReadIndexedList(In& in, const char* field) {
  return in.template Take<T>(ReadIndexedCount(in, List<T>::kStride, field), field);
}

/// Reads `count` records of a list, each by `read`, after announcing the count to `sink`. The bytes
/// that are left can hold so many.
template <class Record, class In, class Sink, class Read>
Records<Record> ReadRecords(In& in, std::uint32_t count, const char* field, Sink& sink,
                            const Read& read) {
  const Span bytes = in.Rest();
  sink.Expect(static_cast<const Record*>(nullptr), count);
  for (std::uint32_t i = 0; i < count && in.Good(); ++i) {
    [[maybe_unused]] const auto entry = in.template Enter<Record>(field, i);
    Record record;
    read(i, record);
  }
  const auto taken = static_cast<std::size_t>(in.Rest().data - bytes.data);
  return {{bytes.data, taken}, in.FileLayout(), count};
}

/// Reads a group. `sink` is called when it begins, for each batch and surface set, and at the end
/// with the group.
template <class In, class Sink, class IsNext>
void ReadGroup(In& in, std::optional<std::uint32_t> materialCount, Group& group, Sink& sink,
               const IsNext& isNext) {
  const auto refuseLayout = [&in](Layout other, std::uint32_t otherType) {
    if (!in.StandsAt(in.Offset(), otherType)) return;
    in.Tell(Fault::kOtherLayout, in.Offset(), "typeCode", otherType, other, in.FileLayout());
    in.GiveUp();
  };
  sink.BeginGroup();
  const auto header = [&] { ReadHeader(in, kQobType, kGroupVersion, group.header); };
  const auto body = [&] {
    group.vertices = ReadIndexedList<Point>(in, "vertices");
    group.batches = ReadRecords<Batch>(in, in.Count(kLeastBatchBytes, "batches"), "batches", sink,
                                       [&](std::uint32_t, Batch& batch) {
                                         ReadBatch(in, materialCount, group.vertices.size(), batch);
                                         if (in.Good()) sink.Take(in, batch);
                                       });
  };
  if (in.FileLayout() == Layout::kQob) {
    in.Record(
        nullptr,
        [&] {
          refuseLayout(Layout::kKob, kKobType);
          header();
        },
        [&] {
          body();
          if (in.Good()) sink.Take(in, group);
        },
        isNext);
    return;
  }

  std::uint64_t outerHeader = 0;
  in.Record(
      "outer",
      [&] {
        outerHeader = in.Offset();
        refuseLayout(Layout::kQob, kQobType);
        ReadHeader(in, kKobType, kGroupVersion, group.outerHeader);
      },
      [&] {
        // What follows the record inside can't be recognised.
        in.Record(nullptr, header, body, [](std::uint64_t) { return false; });
        if (group.outerHeader.name != group.header.name) {
          [[maybe_unused]] const auto outer = in.Enter("outer");
          constexpr std::uint64_t kBytesBeforeName = 4 + 12 + 4;
          in.Tell(Fault::kOuterName, outerHeader + kBytesBeforeName, "name", group.outerHeader.name,
                  group.header.name);
        }
        group.collisionPoints = ReadIndexedList<Point>(in, "collisionPoints");
        group.planes = in.template Take<Plane>(in.Count(List<Plane>::kStride, "planes"), "planes");
        group.faces = ReadIndexedList<Face>(in, "faces");
        group.surfaceSets =
            ReadRecords<SurfaceSet>(in, in.Count(kLeastSetBytes, "surfaceSets"), "surfaceSets",
                                    sink, [&](std::uint32_t, SurfaceSet& set) {
                                      ReadSurfaceSet(in, set);
                                      if (in.Good()) sink.Take(in, set);
                                    });
        if (in.Good()) sink.Take(in, group);
      },
      isNext);
}

template <class In, class Body, class IsNext>
void ReadChunk(In& in, const Chunk& chunk, const Body& body, const IsNext& isNext) {
  const auto header = [&] {
    const std::uint64_t idOffset = in.Offset();
    const std::uint32_t id = in.U32("id");
    if (id != chunk.id) in.Tell(Fault::kChunkId, idOffset, "id", id, chunk.id);
    const std::uint64_t nameOffset = in.Offset();
    const std::string_view name = in.Text("name");
    if (name == chunk.name) return;
    in.Tell(Fault::kChunkName, nameOffset, "name", name, chunk.name);
    if (id != chunk.id) in.GiveUp();  // what follows is no such chunk
  };
  in.Record(chunk.field, header, body, isNext);
}

/// Reads a whole file; `sink` gets each material too.
template <class In, class Sink>
void ReadModel(In& in, Records<Material>& materials, Records<Group>& groups, Sink& sink) {
  // A tag has one right form, so anything else there is its absence.
  const auto readTag = [&in](std::string_view tag, Fault missing, const char* field) {
    if (in.StandsAt(in.Offset(), tag)) {
      in.Bytes(4 + tag.size() + 1, field);
    } else {
      in.Tell(missing, in.Offset(), field);
      in.GiveUp();
    }
  };
  readTag(kStartTag, Fault::kNoStartTag, "startTag");

  // Batches can be judged by the count even when a material can't be read.
  std::optional<std::uint32_t> materialCount;
  ReadChunk(
      in, kMaterialChunk,
      [&] {
        materialCount = in.Count(kLeastMaterialBytes, "materials");
        materials = ReadRecords<Material>(
            in, *materialCount, "materials", sink, [&](std::uint32_t i, Material& material) {
              ReadMaterial(in, material, [&](std::uint64_t offset) {
                return i + 1 == *materialCount ? offset == in.End()
                                               : RecordStandsAt(in, offset, kMaterialType);
              });
              if (in.Good()) sink.Take(in, material);
            });
      },
      [&](std::uint64_t offset) {
        return in.StandsAt(offset + 4, kGeometryChunk.id) &&
               in.StandsAt(offset + 8, kGeometryChunk.name);
      });

  const bool isQob = in.FileLayout() == Layout::kQob;
  ReadChunk(
      in, kGeometryChunk,
      [&] {
        const std::uint32_t count = in.Count(isQob ? kLeastQobBytes : kLeastKobBytes, "groups");
        groups = ReadRecords<Group>(in, count, "groups", sink, [&](std::uint32_t i, Group& group) {
          ReadGroup(in, materialCount, group, sink, [&](std::uint64_t offset) {
            return i + 1 == count ? offset == in.End()
                                  : RecordStandsAt(in, offset, isQob ? kQobType : kKobType);
          });
        });
      },
      [&](std::uint64_t offset) { return in.StandsAt(offset, kEndTag); });

  readTag(kEndTag, Fault::kNoEndTag, "endTag");
  if (in.Good() && in.Left() > 0) {
    in.Tell(Fault::kAfterEndTag, in.Offset(), "endTag", in.Left());
  }
}

/// The source that engines use. It doesn't check indices again in bytes that were checked before.
class Cursor : public Source<Cursor> {
 public:
  Cursor(Span bytes, Layout layout, bool checksIndices)
      : Source(bytes, layout), checksIndices_(checksIndices) {}

  bool ChecksIndices() const { return checksIndices_; }

 private:
  bool checksIndices_;
};

/// Ignores what is read.
struct NoSink {
  void BeginGroup() const {}
  void Expect(const void*, std::uint32_t) const {}
  template <class In, class Record>
  void Take(In&, const Record&) const {}
};

/// Checks the face tables against the lists that they refer to.
struct CheckFaces : NoSink {
  using NoSink::Take;

  void Take(Cursor& in, const Group& group) const {
    for (std::uint32_t i = 0; i < group.faces.size() && in.Good(); ++i) {
      const Face face = group.faces[i];
      const bool drawn = face.batch != -1;
      const std::uint32_t points = drawn ? group.vertices.size() : group.collisionPoints.size();
      bool fits = face.surfaceSet < group.surfaceSets.size() && face.batch >= -1 &&
                  face.batch < std::int64_t{group.batches.size()} &&
                  (drawn || face.position < group.planes.size());
      for (const std::uint16_t vertex : face.vertices) fits = fits && vertex < points;
      if (!fits) {
        in.Tell(Fault::kFaceTable,
                in.OffsetOf(group.faces.data()) + std::uint64_t{i} * List<Face>::kStride, "faces");
      }
    }
    std::uint32_t s = 0;
    for (const SurfaceSet& set : group.surfaceSets) {
      const auto entry = in.Enter<SurfaceSet>("surfaceSets", s++);
      std::uint64_t offset = in.OffsetOf(set.faces.data());
      for (const std::uint16_t face : set.faces) {
        if (face >= group.faces.size()) in.Tell(Fault::kFaceTable, offset, "faces");
        offset += List<std::uint16_t>::kStride;
      }
    }
  }
};

}  // namespace detail

// Each reads the first record of `rest`, which was checked before, and takes it away.

inline void LoadRecord(detail::Span& rest, Layout layout, Material& material) {
  detail::Cursor in(rest, layout, false);
  detail::ReadMaterial(in, material, nullptr);
  rest = in.Rest();
}

inline void LoadRecord(detail::Span& rest, Layout layout, Batch& batch) {
  detail::Cursor in(rest, layout, false);
  detail::ReadBatch(in, std::nullopt, 0, batch);
  rest = in.Rest();
}

inline void LoadRecord(detail::Span& rest, Layout layout, SurfaceSet& set) {
  detail::Cursor in(rest, layout, false);
  detail::ReadSurfaceSet(in, set);
  rest = in.Rest();
}

inline void LoadRecord(detail::Span& rest, Layout layout, Group& group) {
  detail::NoSink nothing;
  detail::Cursor in(rest, layout, false);
  detail::ReadGroup(in, std::nullopt, group, nothing, nullptr);
  rest = in.Rest();
}

inline bool Model::Open(const void* bytes, std::size_t size, Layout layout, Error* error) {
  *this = {};
  Model model;
  detail::Cursor in({static_cast<const std::byte*>(bytes), size}, layout, true);
  detail::CheckFaces checkFaces;
  detail::ReadModel(in, model.materials, model.groups, checkFaces);
  if (error != nullptr) *error = in.FirstError();
  if (!in.Good()) return false;
  model.indicesAreCut = in.HasCutIndices();
  *this = model;
  return true;
}

inline const char* ToText(Fault fault) {
  return detail::TextOf(fault).text;
}

}  // namespace mapexport::reader
