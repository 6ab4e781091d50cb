#include "benchmarks/image_work.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "benchmarks/memory_limit.h"
#include "benchmarks/side_by_side.h"
#include "benchmarks/test_frames.h"

namespace korvel::benchmarks {
namespace {

// Where kernels differ in what they take for the neighbours of a border.
constexpr size_t kBorder = 2;

using Bytes = std::span<const uint8_t>;

// How a peer's result differs from ours; nothing if it doesn't.
std::string DifferenceBetween(Bytes ours, Bytes other, const ImageWork& work) {
  if (std::equal(ours.begin(), ours.end(), other.begin(), other.end())) return "";
  const bool isImage = work.resultFormat != img::PixelFormatId::Invalid && ours.size() == other.size();
  if (isImage && !FindDifference(ours.data(), other.data(), work.resultFormat, work.resultSize, {.margin = kBorder})) {
    return "same within borders";
  }
  return "similar";
}

struct PeerBuffers {
  std::vector<uint8_t> picture;
  std::vector<uint8_t> result;
};

void Restore(std::vector<uint8_t>& picture, const std::vector<uint8_t>& frame) {
  std::memcpy(picture.data(), frame.data(), frame.size());
}

// Compares the result of a peer with ours, which is that of the subject's last call.
void Judge(Contestant& peer, const PeerBuffers& buffers, const ImageWork& work) {
  if (!work.result) return;
  if (peer.prepare) peer.prepare();
  peer.run();
  const Bytes ours = work.result();
  const bool isInPlace = work.changesPicture && work.writtenBytes == 0;
  peer.remark = DifferenceBetween(ours, isInPlace ? buffers.picture : buffers.result, work);
  if (work.changesPicture && buffers.picture != work.picture) peer.remark = "similar";
  peer.isSame = peer.remark.empty();
}

}  // namespace

void MeasureImageWork(benchmark::State& state, const ImageWork& work) {
  const std::vector<uint8_t> frame = work.picture;
  SideBySide contest{.run = work.run, .pixels = work.size.width * work.size.height};
  if (work.changesPicture) contest.prepare = [&] { Restore(work.picture, frame); };

  if (contest.prepare) contest.prepare();
  contest.run();
  const size_t resultBytes = std::max(work.result ? work.result().size() : 0, work.writtenBytes);
  std::vector<PeerMethod> methods = PeerMethods();
  methods.insert(methods.end(), work.morePeers.begin(), work.morePeers.end());
  std::vector<std::unique_ptr<PeerBuffers>> memory;
  for (const PeerMethod& method : methods) {
    if (method.operation != work.operation) continue;
    auto buffers = std::make_unique<PeerBuffers>();
    if (work.changesPicture) buffers->picture = frame;
    buffers->result.resize(resultBytes);
    uint8_t* const picture = work.changesPicture ? buffers->picture.data() : work.picture.data();
    const PeerMemory peerMemory{
        .size = work.size, .picture = picture, .result = buffers->result.data(), .resultSize = work.resultSize};
    Contestant peer{.name = method.name, .run = method.make(peerMemory)};
    if (!peer.run) continue;
    if (work.changesPicture) peer.prepare = [&frame, &own = buffers->picture] { Restore(own, frame); };
    Judge(peer, *buffers, work);
    contest.peers.push_back(peer);
    memory.push_back(std::move(buffers));
  }

  const auto limit = std::make_shared<MemoryLimit>(frame.size(), work.changesPicture, work.writtenBytes);
  for (const auto stores : {MemoryLimit::Stores::Ordinary, MemoryLimit::Stores::NonTemporal}) {
    Contestant way{.name = "memory limit", .run = [=] { limit->Run(stores); }};
    if (work.changesPicture) way.prepare = [&, limit] { limit->Restore(frame); };
    contest.limits.push_back(way);
  }
  Measure(state, contest);
}

}  // namespace korvel::benchmarks
