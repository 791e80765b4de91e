// Tests of include/mapexport/ModelReader.h as an engine uses it.

#include <mapexport/ModelReader.h>

#include "support/ModelFiles.h"
#include "support/Testing.h"

namespace mapexport::reader {
namespace {

static_assert(std::random_access_iterator<List<Plane>::Iterator>);
static_assert(std::forward_iterator<Records<Group>::Iterator>);

struct EngineReaderTest : ::testing::Test {
  EngineReaderTest() {
    EXPECT_TRUE(model.Open(file.bytes.data(), file.bytes.size(), Layout::kKob));
  }

  FileBytes file = BuildFile(Yard(Layout::kKob));
  Model model;
};

TEST_F(EngineReaderTest, WhatAnIteratorGivesOutlivesIt) {
  const Group& group = *model.groups.begin();
  const Material& second = *std::next(model.materials.begin());
  const auto corners = (*group.batches.begin()).cornerIndices.begin();
  EXPECT_EQ(group.vertices.size(), 4u);
  EXPECT_EQ(second.header.name, "Grey");
  EXPECT_EQ(corners[1], (Triple{0, 2, 3}));
}

TEST_F(EngineReaderTest, ListsWorkWithTheStandardLibrary) {
  const Group group = model.groups.front();
  const List<Point>& vertices = group.vertices;
  const std::vector<Point> copy(vertices.begin(), vertices.end());
  ASSERT_EQ(copy.size(), 4u);
  EXPECT_EQ(copy[3].z, 0.5f);
  EXPECT_TRUE(std::any_of(vertices.begin(), vertices.end(), [](Point p) { return p.z > 0; }));
  EXPECT_EQ(std::ranges::max_element(vertices, {}, &Point::z) - vertices.begin(), 3);
  auto it = vertices.begin();
  EXPECT_EQ((*it++).x, 0);
  EXPECT_EQ(it->x, 1);
  EXPECT_EQ(it[2].z, 0.5f);
  EXPECT_TRUE(it < vertices.end() && it + 3 == vertices.end());

  const auto isStatic = [](const SurfaceSet& set) { return set.flags == kStaticNode; };
  EXPECT_EQ(std::ranges::count_if(group.surfaceSets, isStatic), 1);
  auto set = group.surfaceSets.begin();
  EXPECT_EQ((*set++).flags, 0x11u);
  EXPECT_EQ(set->name, "static_crates");
}

TEST_F(EngineReaderTest, RecordsAndEntriesAreFoundByIndex) {
  const Group group = model.groups[0];
  EXPECT_TRUE(model.materials.front().HasTexture());
  EXPECT_FALSE(model.materials[1].HasTexture());
  EXPECT_EQ(group.batches[1].planes.size(), 1u);
  EXPECT_EQ(group.surfaceSets[2].faces.front(), 1);
  EXPECT_FALSE(model.materials[2].HasTexture());  // there is none; its name is empty
  EXPECT_EQ(group.batches[0xFFFFFFFF].material, -1);
  EXPECT_EQ(group.vertices[4].x, 0);
  EXPECT_EQ(Records<Batch>().front().planes.front().d, 0);
}

TEST(LayoutOfNameTest, GoesByTheExtensionInAnyCase) {
  for (const char* name : {".qob", "a.QOB", "folder.kob/x.y.Qob"}) {
    EXPECT_EQ(LayoutOfName(name), Layout::kQob) << name;
  }
  for (const char* name : {"", "qob", "a.kob", "a.qob.map", "a.qobs", "a.q0b", "x.qob/y"}) {
    EXPECT_EQ(LayoutOfName(name), Layout::kKob) << name;
  }
}

}  // namespace
}  // namespace mapexport::reader
