// Tests of the model-file reader: sound files, cut and changed bytes, the memory that reading
// takes, files that can't be had, and what is printed of a model.
#include <new>

#include <malloc.h>
#include <nlohmann/json.hpp>
#include <sys/stat.h>

#include "fuzz/ReadersAgree.h"
#include "modelreader/ModelAdvice.h"
#include "modelreader/ReadModelFile.h"
#include "modelreader/WriteModel.h"
#include "support/ModelFiles.h"
#include "support/Testing.h"
#include "system/PrintableText.h"

namespace {

std::size_t memoryNow = 0;
std::size_t memoryPeak = 0;
std::size_t memoryLimit = std::numeric_limits<std::size_t>::max();

}  // namespace

// All memory of this program is counted, so that tests can bound what reading takes. Inlined, these
// would make g++ 12 take each new and delete for a mismatched pair.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (size > memoryLimit) throw std::bad_alloc();
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  memoryNow += malloc_usable_size(memory);
  memoryPeak = std::max(memoryPeak, memoryNow);
  return memory;
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  if (memory != nullptr) memoryNow -= malloc_usable_size(memory);
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace mapexport {
namespace {

class BothLayouts : public ::testing::TestWithParam<ModelLayout> {};

INSTANTIATE_TEST_SUITE_P(Layouts, BothLayouts,
                         ::testing::Values(ModelLayout::kQob, ModelLayout::kKob));

TEST_P(BothLayouts, SoundFilesAreReadWholly) {
  ModelFile empty;
  empty.layout = GetParam();
  ModelFile twoGroups = Yard(GetParam());
  twoGroups.groups.push_back(twoGroups.groups[0]);
  twoGroups.groups.insert(twoGroups.groups.begin() + 1, ModelGroup());
  twoGroups.groups[1].header = {3, 2, ""};
  twoGroups.groups[1].outerHeader = {35, 2, ""};
  for (const ModelFile& model : {empty, Yard(GetParam()), twoGroups}) {
    const FileBytes file = BuildFile(model);
    const ModelReadResult result = ReadModelBytes(file.bytes, GetParam());
    EXPECT_EQ(Lines(result), "");
    EXPECT_EQ(BuildFile(result.model).bytes, file.bytes);
  }
}

TEST_P(BothLayouts, EveryCutFileHasOneError) {
  const FileBytes file = BuildFile(Yard(GetParam()));
  for (std::size_t size = 0; size < file.bytes.size(); ++size) {
    const auto result = ReadModelBytes(std::span(file.bytes).first(size), GetParam());
    EXPECT_FALSE(result.Sound());
    EXPECT_EQ(result.problems.size(), 1u) << size << '\n' << Lines(result);
  }
}

/// Within a small multiple of the bytes' memory; of a sound file nothing may be lost.
TEST_P(BothLayouts, ChangedBytesAreReadSafely) {
  const FileBytes file = BuildFile(Yard(GetParam()));
  for (std::size_t i = 0; i + 4 <= file.bytes.size(); ++i) {
    for (const std::uint64_t value : {0ull, 1ull, 0x7FFFFFFFull, 0xFFFFFFFFull}) {
      FileBytes changed = file;
      changed.Put(i, value, 4);
      const std::size_t before = memoryNow;
      memoryPeak = before;
      const ModelReadResult result = ReadModelBytes(changed.bytes, GetParam());
      constexpr std::size_t kForProblems = 32 * 1024;
      EXPECT_LE(memoryPeak - before, 16 * file.bytes.size() + kForProblems);
      EXPECT_TRUE(!result.Sound() || BuildFile(result.model).bytes == changed.bytes) << i;
      RequireReadersAgree(changed.bytes, GetParam());
    }
  }
}

TEST_P(BothLayouts, ManySmallRecordsTakeLittleMemory) {
  ModelFile model = Yard(GetParam());
  // One more than what doubling lists would have room for.
  model.materials.resize(4097, model.materials[1]);
  model.groups[0].batches.assign(4097, ModelBatch(model.groups[0].batches[1]));
  const FileBytes file = BuildFile(model);
  const std::size_t before = memoryNow;
  memoryPeak = before;
  {
    const ModelReadResult result = ReadModelBytes(file.bytes, GetParam());
    struct : std::streambuf {
      int overflow(int c) override { return c; }
    } nowhere;
    std::ostream out(&nowhere);
    WriteModelJson(result.model, false, out);
    WriteModelText(result.model, out);
  }
  // With the file's own bytes `inspect` stays below four times its size.
  EXPECT_LE(memoryPeak - before, 3 * file.bytes.size());
}

TEST(ModelReaderTest, FilesThatCannotBeHadAreErrors) {
  const TempFolder temporary;
  const fs::path folder = temporary.Path();
  Write(folder / "empty", "");
  Write(folder / "huge", "");
  fs::resize_file(folder / "huge", std::uint64_t{1} << 32);
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  const std::pair<const char*, const char*> cases[] = {
      {"missing", "can't be opened: No such file or directory"},
      {"", "is a folder, not a model file"},
      {"empty", "is empty"},
      {"pipe", "is not a regular file"},
      {"huge",
       "has 4294967296 bytes: sizes of 32 bits can't describe a file of 4294967296 bytes or more"},
  };
  for (const auto& [name, line] : cases) {
    const ModelReadResult result = ReadModelFile((folder / name).string(), ModelLayout::kKob);
    EXPECT_FALSE(result.Sound());
    EXPECT_EQ(Lines(result), std::string(line) + '\n');
  }

  const FileBytes file = BuildFile(Huge(5000, ModelLayout::kQob));
  Write(folder / "yard.qob", {reinterpret_cast<const char*>(file.bytes.data()), file.bytes.size()});
  EXPECT_EQ(Lines(ReadModelFile((folder / "yard.qob").string(), ModelLayout::kQob)), "");
  memoryLimit = 64 * 1024;
  const ModelReadResult tooLarge = ReadModelFile((folder / "yard.qob").string(), ModelLayout::kQob);
  memoryLimit = std::numeric_limits<std::size_t>::max();
  EXPECT_EQ(Lines(tooLarge), "there is not enough memory to read it\n");
}

nlohmann::json JsonOf(const ModelFile& model, bool summary) {
  std::ostringstream out;
  WriteModelJson(model, summary, out);
  return nlohmann::json::parse(out.str());
}

TEST(ModelReaderTest, InvisibleCharactersAreShown) {
  for (const auto& [text, shown] : std::vector<std::pair<std::string, std::string>>{
           {"\u00ad\u034f\u115f\u17b4\u180e\u200b\u200d",
            "\\u00AD\\u034F\\u115F\\u17B4\\u180E"
            "\\u200B\\u200D"},
           {"\u2028\u202e\u2060\u2066\u206f", "\\u2028\\u202E\\u2060\\u2066\\u206F"},
           {"\u3164\ufe0f\ufeff\uffa0\ufff9", "\\u3164\\uFE0F\\uFEFF\\uFFA0\\uFFF9"},
           {"\U00013430\U000e0001\U000e0041", "\\U00013430\\U000E0001\\U000E0041"},
           {"\u00ac\u00ae\u200a\u2010\u2070\U0001f600\U000e1000",
            "\u00ac\u00ae\u200a\u2010\u2070\U0001f600\U000e1000"}}) {
    EXPECT_EQ(PrintableText(text), shown);
    ModelFile model = Yard(ModelLayout::kKob);
    model.materials[0].header.name = text;
    std::ostringstream out;
    WriteModelJson(model, true, out);
    EXPECT_EQ(nlohmann::json::parse(out.str()).at("materials").at(0).at("name"), text);
    EXPECT_EQ(out.str().find(text) == std::string::npos, text != shown);
  }
}

TEST(ModelReaderTest, ColumnsAlignInEveryScript) {
  for (const auto& [text, width] :
       std::vector<std::pair<std::string, std::size_t>>{{"e\u0301", 1},
                                                        {"\u4e2d\u6587", 4},
                                                        {"\u0939\u093f\u0928\u094d\u0926\u0940", 5},
                                                        {"\u05e9\u05c1\u05b8", 1},
                                                        {"\u1112\u1161\u11ab", 2},
                                                        {"\U0001F680", 2}}) {
    EXPECT_EQ(DisplayWidth(text), width) << text;
    EXPECT_EQ(PrintableText(text, 10), text);
  }
  std::string marks = "a";
  for (int i = 0; i < 1000; ++i) marks += "\u0301";
  EXPECT_LT(PrintableText(marks, 10).size(), 40U);
}

TEST(ModelReaderTest, AdviceIsForWhatIsUnusual) {
  ModelFile model = Yard(ModelLayout::kKob);
  EXPECT_THAT(Advise(model), IsEmpty());
  ModelGroup& group = model.groups[0];
  group.batches.resize(100);
  group.planes.clear();
  group.surfaceSets.push_back({});
  group.vertices.assign(59000, {});
  for (std::size_t i = 0; i < group.vertices.size(); ++i) {
    group.vertices[i].x = static_cast<float>(i % 10);
  }
  group.vertices[7].y = -5000;
  model.materials.push_back(model.materials[0]);
  EXPECT_THAT(
      Advise(model),
      ElementsAre(HasSubstr("larger --voxel-size"),
                  HasSubstr("groups[0].vertices has 59000 of at most 65536 entries"),
                  HasSubstr("remove unused materials"),
                  HasSubstr("1 surface set has no faces, the first is groups[0].surface"),
                  HasSubstr("1 vertex is far outside the rest, the first at (7, -5000, 0)")));
  group.planes.resize(1);  // which may be of any material
  EXPECT_EQ(Advise(model).size(), 4U);

  std::ostringstream out;
  WriteModelParts(model, {.batches = true, .sets = true}, out);
  EXPECT_THAT(out.str(), AllOf(testing::StartsWith("Group 0"),
                               HasSubstr("  Batches, largest first"), HasSubstr("Surface sets"),
                               Not(HasSubstr("more")), Not(HasSubstr("Materials"))));
  EXPECT_GT(std::ranges::count(out.str(), '\n'), 100);
  model.groups.emplace_back();  // as by --split
  for (const bool materials : {false, true}) {
    std::ostringstream parts;
    WriteModelParts(model, {.materials = materials, .sets = true}, parts);
    EXPECT_THAT(parts.str(), AllOf(Not(testing::StartsWith("\n")), HasSubstr("\n\nGroup 1"),
                                   Not(HasSubstr("\n\n\n"))));
  }
  EXPECT_THAT(Advise(model), testing::Each(Not(HasSubstr("--split"))));
}

TEST(ModelReaderTest, OutputStaysValidForAnyNameAndNumber) {
  ModelFile model = Yard(ModelLayout::kKob);
  model.materials[0].header.name = "a\"\\\x1B\x7F\xC2\x9B \xFF\xC3 \xED\xA0\x80 \xC3\xA9\xD8\x9C";
  model.materials[0].scalar1 = -std::numeric_limits<float>::infinity();
  model.materials[0].scalar2 = std::numeric_limits<float>::denorm_min();
  model.groups[0].surfaceSets[0] = {"NONE", 0x105, {}};

  const nlohmann::json material = JsonOf(model, true).at("materials").at(0);
  const std::string lost = "\uFFFD";
  EXPECT_EQ(material.at("name"), "a\"\\\x1B\x7F\xC2\x9B " + lost + lost + ' ' + lost + lost + lost +
                                     " \xC3\xA9\xD8\x9C");
  EXPECT_EQ(material.at("scalar1"), "-Infinity");
  EXPECT_EQ(material.at("scalar2").get<float>(), std::numeric_limits<float>::denorm_min());

  model.materials.push_back(model.materials[0]);
  model.groups[0].batches.resize(30);
  std::ostringstream out;
  WriteModelText(model, out);
  for (const char* part : {"a\"\\\\u001B\\u007F\\u009B \\xFF...", "climbable notrendered 0x100\n",
                           "static_crates      1  (static node)\n", "   <0.1 %\n", " Grey ",
                           "... and 20 more\n", "not drawn at all  2 materials: 0 a",
                           "fullest list      groups[0].vertices, <0.1 % of 65536\n",
                           "    notrendered       2      1\n", "(0, 0, 0) to (1, 1, 0.5)\n"}) {
    EXPECT_THAT(out.str(), HasSubstr(part));
  }
  EXPECT_THAT(out.str(), Not(AnyOf(HasSubstr("NULL"), HasSubstr("NONE"), HasSubstr(" 0.0 %"))));

  model.groups.resize(50, model.groups[0]);  // the table sums up what they have
  out.str("");
  WriteModelText(model, out);
  for (const char* part : {"    notrendered       2     50\n", "\nGroup 3 ", "... and 46 more\n",
                           "... and 10 more\n"}) {
    EXPECT_THAT(out.str(), HasSubstr(part));
  }
  EXPECT_THAT(out.str(), Not(HasSubstr("\nGroup 4 ")));
}

}  // namespace
}  // namespace mapexport
