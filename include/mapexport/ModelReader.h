// Reads the model files of mapexport in an engine: one header, C++17, the standard library only, no
// exceptions, no allocation.
//
//   mapexport::reader::Model model;
//   mapexport::reader::Error error;
//   if (!model.Open(bytes, size, mapexport::reader::Layout::kKob, &error)) return Refuse(error);
//   for (const auto& group : model.groups) {
//     for (const auto& batch : group.batches) Upload(group.vertices, batch);
//   }
//
// Open checks the whole file once: tags, sizes within sizes, every count against the bytes that are
// left, every index against its list but the positions of drawn faces (see Group::faces). All that
// is handed out afterwards are views over the bytes, which must stay as they are meanwhile and need
// no alignment; a list answers zeros beyond its end. What the parts mean is described in
// docs/format.md of mapexport.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string_view>

namespace mapexport::reader {

/// The two layouts of a group. Nothing in a file tells which of them it has: the file's name does,
/// ".qob" being the first and every other extension the second.
enum class Layout { kQob, kKob };

/// Indices stand in the file as 16 bits: in a list with more entries than this, the index of a
/// later entry is cut to its low 16 bits.
inline constexpr std::uint64_t kIndexLimit = 65536;

/// The flags of surface sets, as the keywords of user properties name them.
enum FaceFlag : std::uint32_t {
  kClimbable = 0x01,
  kNotCollidable = 0x02,
  kNotRendered = 0x04,  ///< collision only: the faces stand in no batch
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

/// A list of entries of equal size, read in place.
template <class T>
class List {
 public:
  List() = default;
  List(const std::byte* data, std::uint32_t size) : data_(data), size_(size) {}

  std::uint32_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  /// Entry `index`; beyond the end, an entry of zeros.
  T operator[](std::size_t index) const;
  /// The packed entries as they stand in the file: little-endian, unaligned.
  const std::byte* data() const { return data_; }

  class Iterator {
   public:
    Iterator(const List* list, std::uint32_t index) : list_(list), index_(index) {}
    T operator*() const { return (*list_)[index_]; }
    Iterator& operator++() {
      ++index_;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return index_ != other.index_; }

   private:
    const List* list_;
    std::uint32_t index_;
  };
  Iterator begin() const { return {this, 0}; }
  Iterator end() const { return {this, size_}; }

 private:
  const std::byte* data_ = nullptr;
  std::uint32_t size_ = 0;
};

namespace detail {
struct Span {
  const std::byte* data = nullptr;
  std::size_t size = 0;
};
}  // namespace detail

/// Records of different sizes, which can only be gone through from first to last.
template <class Record>
class Records {
 public:
  Records() = default;
  Records(detail::Span bytes, Layout layout, std::uint32_t size)
      : bytes_(bytes), layout_(layout), size_(size) {}

  std::uint32_t size() const { return size_; }
  bool empty() const { return size_ == 0; }

  class Iterator {
   public:
    Iterator(detail::Span rest, Layout layout, std::uint32_t left)
        : rest_(rest), layout_(layout), left_(left) {
      if (left_ > 0) LoadRecord(rest_, layout_, record_);
    }
    const Record& operator*() const { return record_; }
    const Record* operator->() const { return &record_; }
    Iterator& operator++() {
      if (--left_ > 0) LoadRecord(rest_, layout_, record_);
      return *this;
    }
    bool operator!=(const Iterator& other) const { return left_ != other.left_; }

   private:
    detail::Span rest_;  ///< behind the record
    Layout layout_;
    std::uint32_t left_;
    Record record_;
  };
  Iterator begin() const { return {bytes_, layout_, size_}; }
  Iterator end() const { return {{}, layout_, 0}; }

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

enum class Fault {
  kNone,
  kNoStartTag,
  kNoEndTag,
  kAfterEndTag,
  kChunkId,
  kChunkName,
  kCut,
  kCountTooLarge,
  kSizeTooLarge,
  kSizeLeftOver,
  kTextEmpty,
  kTextNoEnd,
  kTextNul,
  kTypeCode,
  kVersionText,
  kVersion,
  kBool,
  kOuterName,
  kOtherLayout,
  kBatchEmpty,
  kSetFlags,
  kMaterialIndex,
  kVertexIndex,
  kCornerIndex,
  kFaceTable
};

/// A few words that say what is wrong.
const char* ToText(Fault fault);

/// The first thing that is wrong with a file.
struct Error {
  Fault fault = Fault::kNone;
  std::uint64_t offset = 0;  ///< byte of the file
  const char* field = "";    ///< what stands there
};

/// A model file.
class Model {
 public:
  /// Checks `size` bytes and makes them accessible. When they are no sound file of that layout, it
  /// returns false, tells the first reason and leaves the model empty. Time is linear in the size.
  bool Open(const void* bytes, std::size_t size, Layout layout, Error* error = nullptr);

  Records<Material> materials;
  Records<Group> groups;
  /// Whether some list is longer than kIndexLimit, so that indices into it lead astray.
  bool indicesAreCut = false;
};

// --- how it is done; nothing below is meant to be used by name
// --------------------------------------

namespace detail {

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

/// How a list's entry stands in the file: its bytes, how many floats it is if it is nothing else.
template <class T>
struct Entry;

template <>
struct Entry<Point> {
  static constexpr std::uint32_t kBytes = 12;
  static constexpr std::uint32_t kFloats = 3;
  static Point At(const std::byte* bytes) {
    return {F32At(bytes), F32At(bytes + 4), F32At(bytes + 8)};
  }
};

template <>
struct Entry<Plane> {
  static constexpr std::uint32_t kBytes = 16;
  static constexpr std::uint32_t kFloats = 4;
  static Plane At(const std::byte* bytes) { return {Entry<Point>::At(bytes), F32At(bytes + 12)}; }
};

template <>
struct Entry<TextureCoordinates> {
  static constexpr std::uint32_t kBytes = 8;
  static constexpr std::uint32_t kFloats = 2;
  static TextureCoordinates At(const std::byte* bytes) { return {F32At(bytes), F32At(bytes + 4)}; }
};

template <>
struct Entry<Colour> {
  static constexpr std::uint32_t kBytes = 16;
  static constexpr std::uint32_t kFloats = 4;
  static Colour At(const std::byte* bytes) {
    return {F32At(bytes), F32At(bytes + 4), F32At(bytes + 8), F32At(bytes + 12)};
  }
};

template <>
struct Entry<std::uint16_t> {
  static constexpr std::uint32_t kBytes = 2;
  static constexpr std::uint32_t kFloats = 0;
  static std::uint16_t At(const std::byte* bytes) { return U16At(bytes); }
};

template <>
struct Entry<Triple> {
  static constexpr std::uint32_t kBytes = 6;
  static constexpr std::uint32_t kFloats = 0;
  static Triple At(const std::byte* bytes) {
    return {U16At(bytes), U16At(bytes + 2), U16At(bytes + 4)};
  }
};

template <>
struct Entry<Face> {
  static constexpr std::uint32_t kBytes = 16;
  static constexpr std::uint32_t kFloats = 0;
  static Face At(const std::byte* bytes) {
    return {Entry<Triple>::At(bytes), U16At(bytes + 6), U32At(bytes + 8),
            static_cast<std::int32_t>(U32At(bytes + 12))};
  }
};

/// Takes a file's encodings from its bytes, none past the end that holds at the moment. `In` is the
/// class that derives from it, which says what becomes of a fault:
///
///   Tell(fault, offset, field, values...)       a value is wrong
///   TellOfEntry(fault, offset, field, index, values...)    an entry of a list is wrong
///   TellOfEnd(fault, offset, field, values...)  the bytes do not suffice
///   GiveUp()                                    after these: nothing behind it makes sense
///   Good()                                      whether reading goes on
///   ChecksIndices()                             whether indices are held against their lists
///   IndicesCut(offset, field, count)            a list is too long for its indices
///   Enter(field, index)                         an object; while it lives, fields are of that
///   entry Record(field, header, body, isNext)         a size, what `header` and `body` read; the
///   size
///                                               counts the body. isNext(offset) tells whether what
///                                               must follow it stands there
template <class In>
class Source {
 public:
  Source(Span bytes, Layout layout) : bytes_(bytes), end_(bytes.size), layout_(layout) {}
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;

  Layout FileLayout() const { return layout_; }
  std::uint64_t Offset() const { return offset_; }
  std::uint64_t End() const { return end_; }
  std::uint64_t Left() const { return end_ - offset_; }
  /// Where in the file `data`, a list of it, begins.
  std::uint64_t OffsetOf(const std::byte* data) const {
    return static_cast<std::uint64_t>(data - bytes_.data);
  }
  Span Rest() const { return {bytes_.data + offset_, static_cast<std::size_t>(Left())}; }

  /// Whether the number, or the text with its length, stands at `offset` of the file.
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
    const std::byte* const bytes = Bytes(std::uint64_t{count} * Entry<T>::kBytes, field);
    return bytes == nullptr ? List<T>() : List<T>(bytes, count);
  }

 protected:
  void Seek(std::uint64_t offset) { offset_ = offset; }
  void SetEnd(std::uint64_t end) { end_ = end; }

 private:
  In& Self() { return static_cast<In&>(*this); }

  Span bytes_;
  std::uint64_t offset_ = 0;
  std::uint64_t end_;
  Layout layout_;
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
inline constexpr std::uint64_t kBatchFaceBytes = Entry<Plane>::kBytes + 2 * Entry<Triple>::kBytes;
inline constexpr std::uint64_t kCornerBytes =
    Entry<Point>::kBytes + Entry<TextureCoordinates>::kBytes + Entry<Colour>::kBytes;

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
          in.OffsetOf(list.data()) + std::uint64_t{i} * Entry<Triple>::kBytes + 2 * k;
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
      in.template Take<std::uint16_t>(in.Count(Entry<std::uint16_t>::kBytes, "faces"), "faces");
}

template <class T, class In>
List<T> ReadIndexedList(In& in, const char* field) {
  return in.template Take<T>(ReadIndexedCount(in, Entry<T>::kBytes, field), field);
}

/// Reads `count` records of a list, which `read` reads one by one; tells `sink` of them before. The
/// bytes that are left can hold so many.
template <class Record, class In, class Sink, class Read>
Records<Record> ReadRecords(In& in, std::uint32_t count, const char* field, Sink& sink,
                            const Read& read) {
  const Span bytes = in.Rest();
  sink.Expect(static_cast<const Record*>(nullptr), count);
  for (std::uint32_t i = 0; i < count && in.Good(); ++i) {
    [[maybe_unused]] const auto entry = in.Enter(field, i);
    Record record;
    read(i, record);
  }
  const auto taken = static_cast<std::size_t>(in.Rest().data - bytes.data);
  return {{bytes.data, taken}, in.FileLayout(), count};
}

/// Reads a group; `sink` is told that one begins, and gets each batch and surface set, and at the
/// end the group.
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
        // Nothing that can be told from other bytes follows the record inside.
        in.Record(nullptr, header, body, [](std::uint64_t) { return false; });
        if (group.outerHeader.name != group.header.name) {
          [[maybe_unused]] const auto outer = in.Enter("outer");
          constexpr std::uint64_t kBytesBeforeName = 4 + 12 + 4;
          in.Tell(Fault::kOuterName, outerHeader + kBytesBeforeName, "name", group.outerHeader.name,
                  group.header.name);
        }
        group.collisionPoints = ReadIndexedList<Point>(in, "collisionPoints");
        group.planes = in.template Take<Plane>(in.Count(Entry<Plane>::kBytes, "planes"), "planes");
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

/// Stops at the first fault and keeps it: nothing is left to be read behind it.
class Cursor : public Source<Cursor> {
 public:
  Cursor(Span bytes, Layout layout, bool checksIndices)
      : Source(bytes, layout), checksIndices_(checksIndices) {}

  struct NoPlace {};

  template <class... Values>
  void Tell(Fault fault, std::uint64_t offset, const char* field, const Values&...) {
    if (!Good()) return;
    error_ = {fault, offset, field};
    SetEnd(Offset());
  }
  template <class... Values>
  void TellOfEntry(Fault fault, std::uint64_t offset, const char* field, const Values&...) {
    Tell(fault, offset, field);
  }
  template <class... Values>
  void TellOfEnd(Fault fault, std::uint64_t offset, const char* field, const Values&...) {
    Tell(fault, offset, field);
  }
  void GiveUp() {}
  bool Good() const { return error_.fault == Fault::kNone; }
  bool ChecksIndices() const { return checksIndices_; }
  void IndicesCut(std::uint64_t, const char*, std::uint32_t) { indicesAreCut_ = true; }
  NoPlace Enter(const char*, std::uint32_t = 0) { return {}; }

  template <class ReadHead, class ReadBody, class IsNext>
  void Record(const char*, const ReadHead& header, const ReadBody& body, const IsNext&) {
    const std::uint64_t sizeOffset = Offset();
    const std::uint32_t size = U32("size");
    header();
    if (size > Left()) Tell(Fault::kSizeTooLarge, sizeOffset, "size");
    if (!Good()) return;
    const std::uint64_t outerEnd = End();
    const std::uint64_t recordEnd = Offset() + size;
    SetEnd(recordEnd);
    body();
    if (Good() && Offset() != recordEnd) Tell(Fault::kSizeLeftOver, sizeOffset, "size");
    if (Good()) SetEnd(outerEnd);
  }

  const Error& FirstError() const { return error_; }
  bool HasCutIndices() const { return indicesAreCut_; }

 private:
  Error error_;
  bool checksIndices_;
  bool indicesAreCut_ = false;
};

/// Holds the face tables against the lists that they refer to.
struct CheckFaces {
  void BeginGroup() const {}
  void Expect(const void*, std::uint32_t) const {}

  template <class Record>
  void Take(Cursor&, const Record&) const {}

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
                in.OffsetOf(group.faces.data()) + std::uint64_t{i} * Entry<Face>::kBytes, "faces");
      }
    }
    for (const SurfaceSet& set : group.surfaceSets) {
      for (const std::uint16_t face : set.faces) {
        if (face < group.faces.size()) continue;
        in.Tell(Fault::kFaceTable, in.OffsetOf(set.faces.data()), "surfaceSets");
        return;
      }
    }
  }
};

}  // namespace detail

template <class T>
T List<T>::operator[](std::size_t index) const {
  using Entry = detail::Entry<T>;
  return index < size_ ? Entry::At(data_ + index * Entry::kBytes) : T{};
}

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
  struct Nothing {
    void BeginGroup() const {}
    void Expect(const void*, std::uint32_t) const {}
    void Take(detail::Cursor&, const Batch&) const {}
    void Take(detail::Cursor&, const SurfaceSet&) const {}
    void Take(detail::Cursor&, const Group&) const {}
  } nothing;
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
  switch (fault) {
    case Fault::kNone:
      return "nothing is wrong";
    case Fault::kNoStartTag:
      return "the text \"BeginModel\" is missing: this is no model file";
    case Fault::kNoEndTag:
      return "the text \"EndModel\" is missing";
    case Fault::kAfterEndTag:
      return "there are bytes behind the end";
    case Fault::kChunkId:
    case Fault::kChunkName:
      return "this is not the chunk that must stand here";
    case Fault::kCut:
      return "the bytes end too early";
    case Fault::kCountTooLarge:
      return "more entries are counted than bytes are left";
    case Fault::kSizeTooLarge:
      return "the size is larger than what is left";
    case Fault::kSizeLeftOver:
      return "the size is not what the record takes";
    case Fault::kTextEmpty:
    case Fault::kTextNoEnd:
    case Fault::kTextNul:
      return "the text is not closed by a NUL at its end";
    case Fault::kTypeCode:
    case Fault::kVersionText:
    case Fault::kVersion:
      return "the record is of another kind or version";
    case Fault::kBool:
      return "neither 0 nor 1";
    case Fault::kOuterName:
      return "the group's two records have different names";
    case Fault::kOtherLayout:
      return "the file has the other layout";
    case Fault::kBatchEmpty:
      return "a batch without entries";
    case Fault::kSetFlags:
      return "unknown flags";
    case Fault::kMaterialIndex:
    case Fault::kVertexIndex:
    case Fault::kCornerIndex:
    case Fault::kFaceTable:
      return "an index leads out of its list";
  }
  return "";
}

}  // namespace mapexport::reader
