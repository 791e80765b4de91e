// Shows a Scene to an exporter through the host's interfaces.
#pragma once

#include <memory>

#include "host/Interface.h"
#include "scene/Scene.h"

namespace mapexport {

/// The host application with one scene loaded, at time 0 and without a window. Nodes, objects,
/// meshes and materials that it hands out live as long as it does; the Scene must too, unchanged.
/// Its indices must be in range. Everything is made once, by the constructor, without recursion.
class HostScene : public Interface {
 public:
  explicit HostScene(const Scene& scene);
  HostScene(const HostScene&) = delete;
  HostScene& operator=(const HostScene&) = delete;
  ~HostScene() override;

  TimeValue GetTime() const override;
  INode* GetRootNode() const override;
  HWND GetMAXHWnd() const override;

 private:
  struct Content;
  std::unique_ptr<Content> content_;
};

}  // namespace mapexport
