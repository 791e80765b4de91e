// Every stage of an export, and what other libraries need for the like, on one level:
//
//   StageBench SIZE FOLDER
//
// SIZE is one of Level.h's; FOLDER holds what make_level wrote.
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <fcntl.h>
#include <meshoptimizer.h>
#include <unistd.h>

#include "BenchHost.h"
#include "HashedVertices.h"
#include "Level.h"
#include "MeasuredRun.h"
#include "geometry/CleanVertexAttributes.h"
#include "geometry/CollisionLists.h"
#include "geometry/DuplicateTwoSidedFaces.h"
#include "geometry/RemoveDegenerateFaces.h"
#include "geometry/RenderBatches.h"
#include "geometry/VoxelPartition.h"
#include "geometry/FindWeldTargets.h"
#include "geometry/WeldVertices.h"
#include "plugin/MapExporter.h"
#include "plugin/state/ProcessState.h"
#include "scene/SceneFile.h"

namespace mapexport {
namespace {

constexpr float kDistance = 0.2f;
constexpr const char* kWritten = "written.kob";
constexpr const char* kAtOnce = "at-once.kob";

void Weld(GeometryGroup& group) {
  WeldVertices(group, kDistance);
  RemoveDegenerateFaces(group);
}

/// The level as it is before each stage.
struct Stages {
  explicit Stages(const std::string& sceneFile) : scene(ReadSceneFile(sceneFile)), gathered(scene) {
    DuplicateTwoSidedFaces(gathered.group);
    welded = gathered.group;
    Weld(welded);
    cleaned = welded;
    CleanVertexAttributes(cleaned);
    prepared = cleaned;
    PrepareCollisionLists(prepared);
  }

  /// The running export's model, as it is before the file is opened.
  std::unique_ptr<ExportModel> ModelToWrite() const {
    auto model = std::make_unique<ExportModel>(0);
    model->materials = gathered.model.materials;
    model->groups.Append(std::make_unique<GeometryGroup>(cleaned));
    BenchHost::Begin(*model);
    return model;
  }

  Scene scene;
  GatheredScene gathered;
  GeometryGroup welded;
  GeometryGroup cleaned;
  GeometryGroup prepared;  ///< with collision lists
};

VoxelPartition Cells(const GeometryGroup& group) {
  return BuildVoxelPartition(group, VoxelGrid(group, State().options.geometryVoxelSize),
                             State().random);
}

/// From the collision lists to the closed file.
bool WriteKob(ExportModel& model) {
  std::ofstream file(kWritten, std::ios::binary);
  model.WriteKob(file);
  file.close();
  return file.good();
}

/// Writes all of `bytes` at once to a new file.
bool WriteAtOnce(const std::string& path, std::span<const char> bytes) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  const bool isWritten =
      file >= 0 && write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  return close(file) == 0 && isWritten;
}

std::vector<char> BytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// A corner of a triangle by itself, as what looks for equal ones gets it.
struct LooseCorner {
  Point3 position;
  Point3 normal;
  std::array<float, 2> uv;
  ColourRgba colour;
};
static_assert(sizeof(LooseCorner) == 12 * sizeof(float));

std::vector<LooseCorner> LooseCorners(const GeometryGroup& group) {
  std::vector<LooseCorner> corners;
  for (const GroupFace& face : group.faces) {
    for (std::size_t k = 0; k < 3; ++k) {
      const VertexAttribute& a = group.attributes[face.a[k]];
      corners.push_back({group.vertices[face.v[k]], a.normal, {a.uvw.x, a.uvw.y}, a.colour});
    }
  }
  return corners;
}

/// What the import library's own reader makes of the level's .obj file: every corner a vertex of
/// its own, no normals.
std::unique_ptr<Assimp::Importer> ReadObj(const std::string& path) {
  auto importer = std::make_unique<Assimp::Importer>();
  const aiScene* scene = importer->ReadFile(path, 0);
  if (scene == nullptr) throw std::runtime_error(path + ": " + importer->GetErrorString());
  return importer;
}

void RegisterPasses(Stages& stages) {
  const auto fresh = [&stages](const GeometryGroup& group) {
    return [&stages, &group] {
      BenchHost::Begin(stages.gathered.model);
      return group;
    };
  };
  const auto pass = [](void (*run)(GeometryGroup&)) {
    return [run](GeometryGroup& group) {
      run(group);
      return 0;
    };
  };
  RegisterRun("weld", fresh(stages.gathered.group), pass(Weld));
  RegisterRun("clean", fresh(stages.welded), pass(CleanVertexAttributes));
  RegisterRun("weld + clean", fresh(stages.gathered.group), pass([](GeometryGroup& group) {
                Weld(group);
                CleanVertexAttributes(group);
              }));
  RegisterRun("cells", fresh(stages.prepared),
              [](const GeometryGroup& group) { return Cells(group); });
  RegisterRun(
      "batches",
      [&stages] {
        BenchHost::Begin(stages.gathered.model);
        return std::pair(stages.prepared, Cells(stages.prepared));
      },
      [](auto& input) {
        BuildRenderBatches(input.first, input.second);
        return 0;
      });
}

void RegisterWhole(Stages& stages, const std::string& sceneFile) {
  RegisterRun(
      "load", [] { return 0; }, [=](int) { return ReadSceneFile(sceneFile); });
  RegisterRun(
      "gather",
      [] {
        auto model = std::make_unique<ExportModel>(0);
        BenchHost::Begin(*model);
        return model;
      },
      [&stages](std::unique_ptr<ExportModel>& model) {
        model->Gather(stages.gathered.host.GetRootNode());
        return 0;
      });
  RegisterRun(
      "write all",
      [&stages] {
        std::remove(kWritten);
        return stages.ModelToWrite();
      },
      [](std::unique_ptr<ExportModel>& model) { return WriteKob(*model); });
  for (const std::string extension : {"kob", "qob"}) {
    const std::string file = "exported." + extension;
    RegisterRun(
        "export " + extension,
        [=] {
          std::remove(file.c_str());
          return MapExporter();
        },
        [=, &stages](MapExporter& exporter) {
          return exporter.DoExport(file.c_str(), nullptr, &stages.gathered.host, true);
        });
  }
}

void RegisterRivals(const Stages& stages, const std::string& objFile) {
  RegisterRun(
      "post-processing", [=] { return ReadObj(objFile); },
      [](std::unique_ptr<Assimp::Importer>& importer) {
        return importer->ApplyPostProcessing(aiProcess_Triangulate | aiProcess_GenSmoothNormals |
                                             aiProcess_JoinIdenticalVertices);
      });
  RegisterRun(
      "vertex remap", [&stages] { return LooseCorners(stages.gathered.group); },
      [](const std::vector<LooseCorner>& corners) {
        std::unique_ptr<unsigned[]> remap(new unsigned[corners.size()]);
        const std::size_t unique =
            meshopt_generateVertexRemap(remap.get(), nullptr, corners.size(), corners.data(),
                                        corners.size(), sizeof(LooseCorner));
        return std::pair(std::move(remap), unique);
      });
  const auto vertices = [&stages] {
    const auto& from = stages.gathered.group.vertices;
    return std::vector<Point3>(from.begin(), from.end());
  };
  RegisterRun("hash inserts", vertices, FirstEqualVertices);
  RegisterRun("representatives", vertices, [](const std::vector<Point3>& of) {
    return FindWeldTargets(of, kDistance * kDistance);
  });
  WriteKob(*stages.ModelToWrite());
  RegisterRun(
      "write()",
      [bytes = BytesOf(kWritten)] {
        std::remove(kAtOnce);
        return bytes;
      },
      [](const std::vector<char>& bytes) { return WriteAtOnce(kAtOnce, bytes); });
}

int Run(const std::string& size, const std::string& folder) {
  if (!FindLevelSize(size)) throw std::runtime_error("there is no size \"" + size + '"');
  SettleHeap();
  const BenchHost host(folder);
  Stages stages(size + ".scene.json");
  const auto context = [](const char* key, std::size_t count) {
    benchmark::AddCustomContext(key, std::to_string(count));
  };
  benchmark::AddCustomContext("level", size);
  context("triangles", TriangleCount(stages.scene));
  context("vertices", stages.gathered.group.vertices.size());
  context("welded_vertices", stages.welded.vertices.size());
  RegisterPasses(stages);
  RegisterWhole(stages, size + ".scene.json");
  RegisterRivals(stages, size + ".obj");
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}

}  // namespace
}  // namespace mapexport

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (argc != 3) {
    std::fputs("usage: StageBench SIZE FOLDER [--benchmark_...]\n", stderr);
    return 2;
  }
  try {
    return mapexport::Run(argv[1], argv[2]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "StageBench: %s\n", error.what());
    return 1;
  }
}
