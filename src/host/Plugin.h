// What a plug-in library offers the host: its exported functions, class descriptors and exporters.
#pragma once

#include <cstdint>

#include "host/Interface.h"
#include "host/Types.h"

namespace mapexport {

/// The plug-in interface this host speaks; a library's LibVersion must answer it.
inline constexpr std::uint32_t kHostApiVersion = 0x9C40500;
/// The super class of scene exporters.
inline constexpr std::uint32_t kSceneExportSuperClassID = 0xA20;

/// A scene exporter. The host owns it and destroys it. Texts live until the next call on the
/// library.
class SceneExport {
 public:
  virtual ~SceneExport() = default;
  virtual int ExtCount() = 0;
  /// Extension `i` without a leading dot; empty when there is none of that index.
  virtual const char* Ext(int i) = 0;
  virtual const char* LongDesc() = 0;
  virtual const char* ShortDesc() = 0;
  virtual const char* AuthorName() = 0;
  virtual const char* CopyrightMessage() = 0;
  virtual const char* OtherMessage1() = 0;
  virtual const char* OtherMessage2() = 0;
  /// The exporter's version times 100.
  virtual unsigned Version() = 0;
  virtual void ShowAbout(HWND owner) = 0;
  /// Exports the host's scene to the path `name`. Returns 1 when the export was begun, however it
  /// ended; the exporter informs the person itself.
  virtual int DoExport(const char* name, ExpInterface* exportInterface, Interface* hostInterface,
                       bool suppressPrompts) = 0;
};

/// Describes one class of a plug-in library and creates its instances. A static object of the
/// library.
class ClassDesc {
 public:
  virtual int IsPublic() = 0;
  /// A new instance (a SceneExport for kSceneExportSuperClassID), null when memory runs out.
  virtual void* Create(bool loading) = 0;
  virtual int BeginCreate(Interface* hostInterface) = 0;
  virtual int EndCreate(Interface* hostInterface) = 0;
  virtual const char* ClassName() = 0;
  virtual std::uint32_t SuperClassID() = 0;
  virtual Class_ID ClassID() = 0;
  virtual const char* Category() = 0;
  virtual bool OkToCreate(Interface* hostInterface) = 0;
  virtual bool HasClassParams() = 0;
  virtual void EditClassParams(HWND owner) = 0;
  virtual void ResetClassParams(bool fileReset) = 0;
  // Three slots the host reserves; every class answers 0.
  virtual int Reserved13() = 0;
  virtual int Reserved14(std::intptr_t argument) = 0;
  virtual int Reserved15(std::intptr_t argument) = 0;

 protected:
  ~ClassDesc() = default;
};

// The signatures of the four functions that a plug-in library exports with C linkage.
using LibDescriptionFunction = const char*();
using LibNumberClassesFunction = int();
using LibClassDescFunction = ClassDesc*(int);
using LibVersionFunction = std::uint32_t();

}  // namespace mapexport
