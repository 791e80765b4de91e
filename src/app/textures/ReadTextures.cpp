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

/// Runs in the child: size as the message, pixels as the output.
std::string Decode(const std::string& path, FdOutput& output) {
  const Image image = ShrinkImage(DecodeImage(BytesOfFile(path)), kTextureEdge);
  output.sputn(reinterpret_cast<const char*>(image.pixels.data()),
               static_cast<std::streamsize>(image.pixels.size()));
  std::string message;
  PutNumber(message, image.width);
  PutNumber(message, image.height);
  return message;
}

/// The image that a child handed over. It may have been taken over. Throws BadMessage.
Image HandedOver(const ChildOutcome& outcome) {
  MessageParts parts(outcome.message);
  const std::uint64_t width = parts.Number();
  const std::uint64_t height = parts.Number();
  parts.RequireEnd();
  if (std::max(width, height) > kTextureEdge || std::min(width, height) == 0) throw BadMessage();
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
Image ReadImage(const std::string& path, std::optional<Confinement>& confinement) {
  ChildTask task;
  task.run = [&path](FdOutput& output) { return Decode(path, output); };
  task.limits = LimitsOfDecoder();
  task.confinedTo = path;
  try {
    const ChildOutcome outcome = RunInChild(task);
    if (outcome.end != ChildEnd::kDone) throw ImageError(ReasonOf(outcome));
    if (!outcome.confinement) throw BadMessage();
    confinement = outcome.confinement;
    return HandedOver(outcome);
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
  std::map<std::string, Image> images;
  Remarks remarks;
  TextureFolders files;
  std::optional<Confinement> confinement;
  for (const ModelTexture& texture : TexturesOf(model)) {
    const std::optional<TextureFile> file = FindInFolders(files, folders, texture.name);
    if (!file) {
      remarks.push_back(MissingTexture(texture, fmt::format("in {}", fmt::join(folders, ", "))));
      continue;
    }
    inputs.Add(file->path, "texture");
    try {
      images.emplace(texture.name, ReadImage(file->path, confinement));
    } catch (const ImageError& error) {
      remarks.push_back(MakeWarning(
          "texture-left-out", fmt::format("texture {}: {} can't be read: {}", Quoted(texture.name),
                                          file->path, error.what())));
    }
  }
  messages.TellAll(path, std::move(remarks));
  if (confinement) WarnOfConfinement(*confinement, path, messages);
  return images;
}

std::map<std::string, std::string> PageTextures(const ModelFile& model, const std::string& path,
                                                const std::map<std::string, Image>& images,
                                                Messages& messages) {
  std::map<std::string, std::string> encoded;
  Remarks remarks;
  std::uint64_t bytes = 0;
  for (const ModelTexture& texture : TexturesOf(model)) {
    const auto image = images.find(texture.name);
    if (image == images.end()) continue;
    std::string png = EncodePng(image->second);
    if (bytes + png.size() > kPageBytes) {
      remarks.push_back(MakeWarning(
          "texture-left-out",
          fmt::format("texture {} is left out: the images of a page take at most {} MiB",
                      Quoted(texture.name), kPageBytes >> 20)));
      continue;
    }
    bytes += png.size();
    encoded.emplace(texture.name, std::move(png));
  }
  messages.TellAll(path, std::move(remarks));
  return encoded;
}

TextureImages PictureTextures(const std::map<std::string, Image>& images) {
  TextureImages textures;
  for (const auto& [name, image] : images) {
    TextureLevels& levels = textures[name];
    levels.push_back(image);
    for (;;) {
      const std::uint32_t edge = std::max(levels.back().width, levels.back().height);
      if (edge == 1) break;
      levels.push_back(ShrinkImage(levels.back(), edge / 2));
    }
  }
  return textures;
}

}  // namespace mapexport
