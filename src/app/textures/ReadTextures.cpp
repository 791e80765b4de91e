#include "app/textures/ReadTextures.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <sys/stat.h>

#include "app/LoadScene.h"
#include "app/textures/FindTextures.h"
#include "images/DecodeImage.h"
#include "images/EncodePng.h"
#include "images/ShrinkImage.h"
#include "modelreader/ModelTextures.h"
#include "system/Descriptor.h"
#include "system/FdOutput.h"
#include "system/PrintableText.h"
#include "system/RunError.h"
#include "worker/RunInChild.h"
#include "worker/ShadowMemory.h"

namespace mapexport {
namespace {

constexpr std::uint64_t kLargestFile = std::uint64_t{256} << 20;
constexpr std::uint64_t kPageBytes = std::uint64_t{32} << 20;
constexpr std::uint64_t kBytesPerPixel = 4;
// A decoder needs the file, kMaxImagePixels and, for some images, coefficients of them.
constexpr std::uint64_t kMemoryToDecode = std::uint64_t{1} << 30;

ProcessLimits LimitsOfDecoder() {
  constexpr std::uint64_t kOthers = std::uint64_t{64} << 10;  ///< pixels apart
  ProcessLimits limits{.processorSeconds = 20, .clockSeconds = 200};
  limits.fileSize = kBytesPerPixel * kTextureEdge * kTextureEdge + kOthers;
  limits.openFiles = 64;
  // This process's own address space, with the model, counts too.
  if (!kShadowMemory) limits.addressSpace = MemoryLimit() / 4 + kMemoryToDecode;
  return limits;
}

std::vector<std::uint8_t> BytesOfFile(const std::string& path) {
  const Descriptor file = OpenToRead(path);
  struct stat info {};
  if (!file.IsOpen() || fstat(file.Get(), &info) != 0) throw ImageError(ErrnoText(errno));
  if (!S_ISREG(info.st_mode)) throw ImageError("it is no file");
  const auto size = static_cast<std::uint64_t>(info.st_size);
  if (size > kLargestFile) throw ImageError("it is longer than 256 MiB");
  std::vector<std::uint8_t> bytes(size);
  const ssize_t got = ReadUpTo(file.Get(), bytes.data(), bytes.size());
  if (got < 0) throw ImageError(ErrnoText(errno));
  bytes.resize(static_cast<std::size_t>(got));
  return bytes;
}

/// kTextureEdge, or less, so that so many images together take no more memory than the largest
/// that is decoded.
std::uint32_t EdgeOf(std::size_t images) {
  std::uint32_t edge = kTextureEdge;
  while (edge > 1 && images > kMaxImagePixels / (std::uint64_t{edge} * edge)) edge /= 2;
  return edge;
}

/// Runs in the child: size as the message, pixels as the output.
std::string Decode(const std::string& path, std::uint32_t edge, FdOutput& output) {
  const Image image = ShrinkImage(DecodeImage(BytesOfFile(path)), edge);
  output.sputn(reinterpret_cast<const char*>(image.pixels.data()),
               static_cast<std::streamsize>(image.pixels.size()));
  std::string message;
  PutNumber(message, image.width);
  PutNumber(message, image.height);
  return message;
}

/// The image that a child handed over. It may have been taken over. Throws BadMessage.
Image HandedOver(const ChildOutcome& outcome, std::uint32_t edge) {
  MessageParts parts(outcome.message);
  const std::uint64_t width = parts.Number();
  const std::uint64_t height = parts.Number();
  parts.RequireEnd();
  if (std::max(width, height) > edge || std::min(width, height) == 0) throw BadMessage();
  Image image = MakeImage(width, height);
  const ssize_t got =
      ReadUpTo(outcome.output.Get(), image.pixels.data(), image.pixels.size(), std::uint64_t{0});
  if (got != static_cast<ssize_t>(image.pixels.size())) throw BadMessage();
  return image;
}

std::string ReasonOf(const ChildOutcome& outcome) {
  switch (outcome.end) {
    case ChildEnd::kRefused:
      return PrintableText(outcome.message, 200);
    case ChildEnd::kMemoryRanOut:
      return "it needs more memory than there is";
    case ChildEnd::kSignal:
      return "the decoder was ended: " + SignalText(outcome.number);
    default:
      return "the decoder failed";
  }
}

/// Throws ImageError.
Image ReadImage(const std::string& path, std::uint32_t edge,
                std::optional<Confinement>& confinement) {
  ChildTask task;
  task.run = [&path, edge](FdOutput& output) { return Decode(path, edge, output); };
  task.limits = LimitsOfDecoder();
  task.confinedTo = path;
  try {
    const ChildOutcome outcome = RunInChild(task);
    if (outcome.end != ChildEnd::kDone) throw ImageError(ReasonOf(outcome));
    if (!outcome.confinement) throw BadMessage();
    confinement = outcome.confinement;
    return HandedOver(outcome, edge);
  } catch (const BadMessage&) {
    throw ImageError("the decoder failed");
  } catch (const ChildError& error) {
    throw ImageError(error.what());
  }
}

}  // namespace

std::map<std::string, Image> ReadTextures(const ModelFile& model, const std::string& path,
                                          std::span<const std::string> folders, TakenFiles& inputs,
                                          Messages& messages) {
  RequireTextureFolders(folders);
  Remarks remarks;
  TextureFolders files;
  std::map<std::string, std::vector<std::string>> names;  // of textures, by their files
  std::size_t found = 0;
  for (const ModelTexture& texture : TexturesOf(model)) {
    if (const auto file = FindInFolders(files, folders, texture.name)) {
      names[file->path].push_back(texture.name);
      ++found;
    } else {
      remarks.push_back(MissingTexture(texture, fmt::format("in {}", fmt::join(folders, ", "))));
    }
  }
  std::map<std::string, Image> images;
  std::optional<Confinement> confinement;
  const std::uint32_t edge = EdgeOf(found);
  for (const auto& [file, ofFile] : names) {
    inputs.Add(file, "texture");
    try {
      const Image image = ReadImage(file, edge, confinement);
      for (const std::string& name : ofFile) images.emplace(name, image);
    } catch (const ImageError& error) {
      remarks.push_back(
          MakeWarning("texture-left-out", fmt::format("texture {}: {} can't be read: {}",
                                                      Quoted(ofFile.front()), file, error.what())));
    }
  }
  messages.TellAll(path, std::move(remarks));
  if (confinement) WarnOfConfinement(*confinement, names.begin()->first, messages);
  return images;
}

std::map<std::string, std::string> PageTextures(std::map<std::string, Image>&& images) {
  for (std::uint32_t edge = EdgeOf(images.size());; edge /= 2) {
    std::map<std::string, std::string> encoded;
    std::uint64_t bytes = 0;
    for (auto& [name, image] : images) {
      image = ShrinkImage(std::move(image), edge);
      bytes += (encoded[name] = EncodePng(image)).size();
      if (bytes > kPageBytes && edge > 1) break;
    }
    if (bytes <= kPageBytes || edge == 1) return encoded;
  }
}

TextureImages PictureTextures(std::map<std::string, Image>&& images) {
  TextureImages textures;
  for (auto& [name, image] : images) {
    TextureLevels& levels = textures[name];
    levels.push_back(std::move(image));
    for (;;) {
      const std::uint32_t edge = std::max(levels.back().width, levels.back().height);
      if (edge == 1) break;
      levels.push_back(ShrinkImage(levels.back(), edge / 2));
    }
  }
  return textures;
}

}  // namespace mapexport
