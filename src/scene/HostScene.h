// Shows a Scene to an exporter through the host's interfaces.
#pragma once

#include <cstddef>
#include <memory>

#include "host/Interface.h"
#include "scene/Scene.h"

namespace mapexport {

/// The host application with one scene loaded, at time 0 and without a window. Nodes, objects,
/// meshes and materials that it hands out live as long as it does; the Scene must too, unchanged.
/// Its indices must be in range. Everything is made once, by the constructor, without recursion.
class HostScene : public Interface {
 public:
  /// `longestList` is the most entries that a list of the export may have; 0: any number.
  explicit HostScene(const Scene& scene, std::size_t longestList = 0);
  HostScene(const HostScene&) = delete;
  HostScene& operator=(const HostScene&) = delete;
  ~HostScene() override;

  TimeValue GetTime() const override;
  INode* GetRootNode() const override;
  HWND GetMAXHWnd() const override;
  std::size_t GetLongestList() const override;

 private:
  struct Content;
  std::unique_ptr<Content> content_;
  std::size_t longestList_;
};

}  // namespace mapexport
