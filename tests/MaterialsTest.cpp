// Material records: what they take from the host's materials, and how they are found again.

#include "exporter/base/ProcessState.h"
#include "exporter/materials/MaterialsList.h"
#include "support/TestSystem.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

class FakeMap : public BitmapTex {
 public:
  explicit FakeMap(std::string file = "") : path(std::move(file)) {}
  Class_ID ClassID() const override { return classId; }
  bool GetUVTransform(Matrix3& uvTransform) const override {
    if (offersTransform) uvTransform = transform;
    return offersTransform;
  }
  const char* GetMapName() const override { return path.c_str(); }

  std::string path;
  Class_ID classId = kBitmapTexClassID;
  bool offersTransform = false;
  Matrix3 transform{{Point3{2, 0, 0}, {0, 3, 0}, {0, 0, 1}, {4, 5, 0}}};
};

/// The colours and scalars depend on the time at which they are asked for.
class FakeMaterial : public StdMat {
 public:
  explicit FakeMaterial(std::string materialName, Texmap* diffuseMap = nullptr)
      : name(std::move(materialName)), map(diffuseMap) {}
  Class_ID ClassID() const override { return kStandardMtlClassID; }
  const char* GetName() const override { return name.c_str(); }
  int NumSubMtls() const override { return 0; }
  Mtl* GetSubMtl(int) const override { return nullptr; }
  Color GetAmbient(TimeValue t) const override { return {At(t), 0.25f, 0.125f}; }
  Color GetDiffuse(TimeValue t) const override { return {0.5f, At(t), 0.125f}; }
  Color GetSpecular(TimeValue t) const override { return {0.5f, 0.25f, At(t)}; }
  float GetOpacity(TimeValue t) const override { return At(t) + 1; }
  float GetShininess(TimeValue t) const override { return At(t) + 2; }
  float GetShinStr(TimeValue t) const override { return At(t) + 3; }
  int GetShading() const override { return -7; }
  bool GetTwoSided() const override { return true; }
  Texmap* GetSubTexmap(int i) const override { return i == 1 ? map : nullptr; }

  std::string name;
  Texmap* map;

 private:
  static float At(TimeValue t) { return static_cast<float>(t); }
};

class FakeMulti : public Mtl {
 public:
  explicit FakeMulti(std::vector<Mtl*> materials) : subMaterials(std::move(materials)) {}
  Class_ID ClassID() const override { return kMultiMtlClassID; }
  const char* GetName() const override { return "Multi"; }
  int NumSubMtls() const override { return static_cast<int>(subMaterials.size()); }
  Mtl* GetSubMtl(int i) const override { return subMaterials[static_cast<std::size_t>(i)]; }

  std::vector<Mtl*> subMaterials;
};

std::array<float, 4> Values(const ColourRgba& c) {
  return {c.r, c.g, c.b, c.a};
}

class MaterialsTest : public testing::Test {
 protected:
  MaterialsTest() {
    State().currentTime = 160;
    State().transparentTextures.Clear();
    State().transparentTextures.Append("glass");
  }

  int Add(StdMat& material) { return list_.FindOrAddMaterial(material, textured_); }

  TestSystem system_;
  MaterialsList list_;
  bool textured_ = false;
};

TEST_F(MaterialsTest, RecordTakesTheHostsValuesAtTheTimeOfTheExport) {
  using Rgba = std::array<float, 4>;
  FakeMap map("D:\\Art\\GLASS.bmp");
  map.offersTransform = true;
  FakeMaterial plain("Plain");
  FakeMaterial window("Window", &map);

  EXPECT_EQ(Add(plain), 0);
  EXPECT_FALSE(textured_);
  const MaterialRecord& untextured = list_.Records()[0];
  EXPECT_EQ(untextured.name, "Plain");
  EXPECT_EQ(untextured.textureName, "NULL");
  EXPECT_EQ(Values(untextured.ambient), (Rgba{160, 0.25f, 0.125f, 1}));
  EXPECT_EQ(Values(untextured.diffuse), (Rgba{0.5f, 160, 0.125f, 1}));
  EXPECT_EQ(untextured.uvTransform, Matrix3{});
  EXPECT_FALSE(list_.IsTransparent(0));

  EXPECT_EQ(Add(window), 1);
  EXPECT_TRUE(textured_);
  const MaterialRecord& record = list_.Records()[1];
  EXPECT_EQ(record.textureName, "glass.bmp");
  EXPECT_EQ(Values(record.ambient), (Rgba{0.1f, 0.1f, 0.1f, 1}));
  EXPECT_EQ(Values(record.diffuse), (Rgba{1, 1, 1, 1}));
  EXPECT_EQ(Values(record.specular), (Rgba{0.5f, 0.25f, 160, 1}));
  EXPECT_EQ(record.scalar1, 161.0f);
  EXPECT_EQ(record.scalar2, 162.0f);
  EXPECT_EQ(record.scalar3, 163.0f);
  EXPECT_EQ(record.modeValue, -7);
  EXPECT_EQ(record.uvTransform, map.transform);
  EXPECT_TRUE(list_.IsTransparent(1));
  EXPECT_TRUE(list_.IsTwoSided(1));
  EXPECT_FALSE(list_.IsTransparent(-1));
  EXPECT_FALSE(list_.IsTwoSided(-1));
}

TEST_F(MaterialsTest, TextureNameIsTheEndOfTheBitmapsPath) {
  State().transparentTextures.Append("");
  const struct {
    const char* path;
    const char* name;
    bool transparent;
  } cases[] = {
      {"wall.bmp", "wall.bmp", false},
      {"C:\\Art/Glass.v2.BMP", "glass.v2.bmp", true},
      {"\\\\server\\art.v1\\Glass.bmp", "art.v1\\glass.bmp", false},
      {"../art/glass.bmp", "../art/glass.bmp", true},  // nothing before the first dot
      {"art\\Glass", "glass", true},
      {"art\\", "", true},
      {"", "", true},
      {"art/Null", "null", false},
      {"art/NULL", "NULL", false},
      {"GLASS\xC3\x84.bmp", "glass\xC3\x84.bmp", false},
  };
  for (const auto& c : cases) {
    FakeMap map(c.path);
    FakeMaterial material(c.path, &map);
    const int index = Add(material);
    EXPECT_EQ(list_.Records()[static_cast<std::size_t>(index)].textureName.View(), c.name);
    EXPECT_EQ(list_.IsTransparent(index), c.transparent) << c.path;
    EXPECT_EQ(textured_, std::string(c.name) != "NULL") << c.path;
  }
}

TEST_F(MaterialsTest, AMapThatIsNoBitmapGivesItsTransformOnly) {
  FakeMap map("glass.bmp");
  map.classId = {0x243, 0};
  map.offersTransform = true;
  FakeMaterial material("Noise", &map);
  Add(material);
  EXPECT_FALSE(textured_);
  EXPECT_EQ(list_.Records()[0].textureName, "NULL");
  EXPECT_EQ(list_.Records()[0].uvTransform, map.transform);
  EXPECT_FALSE(list_.IsTransparent(0));
}

TEST_F(MaterialsTest, EqualNamesShareTheFirstRecord) {
  FakeMap map("wall.bmp");
  FakeMaterial first("Wall", &map);
  FakeMaterial second("Wall");
  FakeMaterial other("wall");
  EXPECT_EQ(Add(first), 0);
  EXPECT_EQ(Add(second), 0);
  EXPECT_TRUE(textured_);
  EXPECT_EQ(Add(other), 1);
}

TEST_F(MaterialsTest, SubMaterialsFillTheMapButForMissingOnes) {
  FakeMap map("wall.bmp");
  FakeMaterial plain("Plain");
  FakeMaterial wall("Wall", &map);
  FakeMulti inner({&wall});
  FakeMulti multi({&plain, nullptr, &inner, &wall, &plain});

  std::vector<int> indices(5, -1);
  EXPECT_TRUE(list_.FindOrAddSubMaterials(multi, 5, indices));
  EXPECT_EQ(indices, (std::vector<int>{0, -1, -1, 1, 0}));
  EXPECT_FALSE(list_.FindOrAddSubMaterials(multi, 3, indices));
  EXPECT_FALSE(list_.FindOrAddSubMaterials(multi, 0, {}));
}

}  // namespace
}  // namespace mapexport
