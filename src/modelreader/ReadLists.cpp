#include "modelreader/ReadLists.h"

#include "modelreader/LittleEndian.h"

namespace mapexport {

ModelPoint PointAt(const std::byte* bytes) {
  return {F32At(bytes), F32At(bytes + 4), F32At(bytes + 8)};
}

ModelPlane PlaneAt(const std::byte* bytes) {
  return {PointAt(bytes), F32At(bytes + kPointBytes)};
}

std::array<std::uint16_t, 3> TripleAt(const std::byte* bytes) {
  return {U16At(bytes), U16At(bytes + 2), U16At(bytes + 4)};
}

std::uint32_t ReadIndexedCount(ByteReader& in, std::uint64_t entryBytes, const Place& list) {
  const std::uint64_t offset = in.Offset();
  const std::uint32_t count = in.Count(entryBytes, list);
  if (count > kModelIndexLimit) {
    in.Problems().Add(ModelProblemCode::kIndicesCut, offset, list, count, kModelIndexLimit);
  }
  return count;
}

std::vector<ModelPoint> ReadPoints(ByteReader& in, const Place& list) {
  std::vector<ModelPoint> points(ReadIndexedCount(in, kPointBytes, list));
  const std::byte* bytes = in.Floats(points.size(), 3, list).data();
  for (std::size_t i = 0; i < points.size(); ++i) points[i] = PointAt(bytes + i * kPointBytes);
  return points;
}

std::vector<ModelPlane> ReadPlanes(ByteReader& in, const Place& list) {
  std::vector<ModelPlane> planes(in.Count(kPlaneBytes, list));
  const std::byte* bytes = in.Floats(planes.size(), 4, list).data();
  for (std::size_t i = 0; i < planes.size(); ++i) planes[i] = PlaneAt(bytes + i * kPlaneBytes);
  return planes;
}

}  // namespace mapexport
