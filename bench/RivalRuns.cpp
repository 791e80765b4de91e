#include "RivalRuns.h"

#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <fcntl.h>
#include <meshoptimizer.h>
#include <unistd.h>

#include "FirstEqualVertices.h"
#include "LooseCorners.h"
#include "MeasuredRun.h"
#include "exporter/geometry/FindWeldTargets.h"

namespace mapexport {
namespace {

constexpr const char* kAtOnce = "at-once.kob";

std::unique_ptr<Assimp::Importer> ReadObj(const std::string& path) {
  auto importer = std::make_unique<Assimp::Importer>();
  const aiScene* scene = importer->ReadFile(path, 0);
  if (scene == nullptr) throw std::runtime_error(path + ": " + importer->GetErrorString());
  if (scene->mMeshes[0]->HasNormals()) throw std::runtime_error(path + ": has normals");
  return importer;
}

std::vector<char> BytesOfModel(const LevelStages& stages) {
  if (!WriteKobFile(*stages.ModelToWrite(), kAtOnce)) {
    throw std::runtime_error(std::string(kAtOnce) + ": can't be written");
  }
  std::ifstream file(kAtOnce, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool WriteAtOnce(const std::vector<char>& bytes) {
  const int file = open(kAtOnce, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) return false;
  const bool isWritten = std::cmp_equal(write(file, bytes.data(), bytes.size()), bytes.size());
  return close(file) == 0 && isWritten;
}

void RegisterVertices(const LevelStages& stages) {
  const auto vertices = [&stages] {
    const auto& from = stages.gathered.group.vertices;
    return std::vector<Point3>(from.begin(), from.end());
  };
  RegisterRun("hash inserts", vertices, FirstEqualVertices);
  RegisterRun("representatives", vertices, [](const std::vector<Point3>& of) {
    return FindWeldTargets(of, kWeldDistance * kWeldDistance);
  });
}

}  // namespace

void RegisterRivals(const LevelStages& stages, const std::string& objFile) {
  RegisterRun(
      "post-processing", [=] { return ReadObj(objFile); },
      [](std::unique_ptr<Assimp::Importer>& importer) {
        return importer->ApplyPostProcessing(aiProcess_Triangulate | aiProcess_GenSmoothNormals |
                                             aiProcess_JoinIdenticalVertices) != nullptr;
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
  RegisterVertices(stages);
  RegisterRun(
      "write()",
      [bytes = BytesOfModel(stages)] {
        std::remove(kAtOnce);
        return bytes;
      },
      WriteAtOnce);
}

}  // namespace mapexport
