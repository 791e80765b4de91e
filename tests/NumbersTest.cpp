// What the exporter computes with: points, numbers as text, the bytes that it writes, the random
// generator.
#include "exporter/base/NumberText.h"
#include "exporter/base/RandomGenerator.h"
#include "exporter/geometry/CollisionLists.h"
#include "exporter/geometry/ConvertCoordinates.h"
#include "exporter/geometry/VertexAttribute.h"
#include "exporter/modelwriter/BinaryWriter.h"
#include "host/Matrix3.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

TEST(Arithmetic, IsDoneInTheOrderWritten) {
  const Matrix3 far{{Point3{1, 0, 0}, Point3{1, 0, 0}, Point3{0, 0, 1}, Point3{16777216, 0, 0}}};
  EXPECT_EQ((Point3{1, 1, 0} * far).x, 16777218.0f);
  EXPECT_EQ(PlaneOf({1, 1, 1}, {1, 16777216, -16777216}).d, -1.0f);
  EXPECT_EQ(TransformParity({{Point3{0, 0, 2}, Point3{0, 3, 0}, Point3{5, 0, 0}, Point3{}}}),
            -30.0f);
  EXPECT_EQ(Normalize({1e-30f, 0, 0}), Point3()) << "the square underflows";
}

TEST(AttributesMatch, IsStrictAndLooksAtReservedAndMaterial) {
  const VertexAttribute a;
  VertexAttribute b;
  b.normal.x = 0.01f;
  EXPECT_FALSE(AttributesMatch(a, b));
  b.normal.x = std::nextafter(0.01f, 0.0f);
  EXPECT_TRUE(AttributesMatch(a, b));
  b.reserved = 1;
  EXPECT_FALSE(AttributesMatch(a, b));
  b.reserved = 0;
  b.material = 1;
  EXPECT_FALSE(AttributesMatch(a, b));
}

TEST(BinaryWriter, KeepsTheLowBitsAndPatchesWhatIsOut) {
  std::ostringstream stream;
  {
    BinaryWriter out(stream);
    SizeField size(out);
    size.BeginBody();
    out.U16(65537);
    out.LString(std::string(1200000, 'x'));
    size.EndBody();
    out.Entries(400000, 6, [](BinaryCursor& entry, std::size_t i) {
      entry.U32(static_cast<std::uint32_t>(i));
      entry.U16(static_cast<std::uint32_t>(i) * 3);
    });
  }
  const std::string bytes = stream.str();
  EXPECT_EQ(bytes.substr(0, 10), std::string("\x87\x4f\x12\0\1\0\x81\x4f\x12\0", 10));
  std::string entries;
  for (std::uint32_t i = 0; i < 400000; ++i) {
    for (const std::uint32_t part : {i, i >> 8, i >> 16, i >> 24, i * 3, i * 3 >> 8}) {
      entries += static_cast<char>(part & 0xFF);
    }
  }
  EXPECT_TRUE(bytes.ends_with(entries)) << "a list across the buffer's borders";
}

TEST(RandomGenerator, FollowsItsDefinition) {
  // Worked out apart from this program: the first draw, the first that meets an earlier one, and
  // the last and the first of two rounds of the table.
  struct Sequence {
    std::uint32_t seed;
    std::array<std::uint32_t, 4> draws;
  };
  for (const Sequence& sequence :
       {Sequence{1, {1005179425, 514310321, 193415660, 177304217}},
        Sequence{0xDEADBEEF, {447981537, 770794783, 359598100, 966560815}}}) {
    RandomGenerator random(sequence.seed);
    std::vector<std::uint32_t> drawn(56);
    for (std::uint32_t& draw : drawn) draw = random.Draw();
    EXPECT_EQ((std::array{drawn[0], drawn[31], drawn[54], drawn[55]}), sequence.draws);
    const float u = random.Uniform(2.0f, 4.0f);
    EXPECT_TRUE(u >= 2.0f && u <= 4.0f);
  }
}

TEST(NumberText, IsTheSameInEveryLocale) {
  const struct {
    const char* text;
    double value;
  } numbers[] = {
      {"", 0},           {"abc", 0},    {"-1.5e2x", -150},
      {" \t+7", 7},      {".5", 0.5},   {"5.", 5},
      {".", 0},          {"-", 0},      {"Inf", 0},
      {"infinity", 0},   {"nano", 0},   {"1.#INF00", 1},
      {"0x10", 0},       {"1,5", 1},    {"- 3", 0},
      {"1e-9999999", 0}, {"1e-400", 0}, {"3e5000", std::numeric_limits<double>::infinity()}};
  for (const auto& number : numbers)
    EXPECT_EQ(LeadingNumber(number.text), number.value) << number.text;
  EXPECT_EQ(LeadingInteger(" -12abc"), -12);
  EXPECT_EQ(LeadingInteger("99999999999999999999"), std::numeric_limits<int>::max());
  EXPECT_EQ(LeadingInteger("-99999999999"), std::numeric_limits<int>::min());
  EXPECT_EQ(LeadingInteger("x1"), 0);
  EXPECT_EQ(FormatFloat(-0.0f), "-0.000000");
  EXPECT_EQ(FormatFloat(3.4028235e38f), "340282346638528859811704183484516925440.000000");
}

}  // namespace
}  // namespace mapexport
