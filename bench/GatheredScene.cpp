#include "GatheredScene.h"

#include "BenchHost.h"

namespace mapexport {
namespace {

GeometryGroup& Gathered(ExportModel& model, const HostScene& host) {
  BenchHost::Begin(model);
  model.Gather(host.GetRootNode());
  return *model.groups.At(0);
}

}  // namespace

GatheredScene::GatheredScene(const Scene& scene)
    : host(scene), model(0), group(Gathered(model, host)) {}

}  // namespace mapexport
