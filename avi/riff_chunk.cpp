#include "avi/riff_chunk.h"

#include <utility>

namespace avi {
namespace {

constexpr uint32_t kTypeByteCount = 4;

}  // namespace

RIFFchunk::RIFFchunk(uint32_t chunkId, uint32_t chunkType) : id(chunkId), parentType(chunkType) {
  if (IsList()) size = kTypeByteCount;
  if (id == kRiff) formType = chunkType;
}

RIFFchunk& RIFFchunk::AddReadChild(std::unique_ptr<RIFFchunk> child) {
  child->parent = this;
  child->depth = depth + 1;
  child->formType = formType;
  if (!child->IsList()) child->parentType = parentType;
  return *children.emplace_back(std::move(child));
}

RIFFchunk& RIFFchunk::AddChild(std::unique_ptr<RIFFchunk> child) {
  RIFFchunk& added = AddReadChild(std::move(child));
  SumSizes();
  return added;
}

void RIFFchunk::SumSizes() {
  for (RIFFchunk* chunk = this; chunk != nullptr; chunk = chunk->parent) {
    uint64_t sum = kTypeByteCount;
    for (const auto& child : chunk->children) sum += child->Length();
    // The frames of the "movi" list are no chunks of the tree; it keeps count itself.
    if (chunk->parentType != kMovi) chunk->size = static_cast<uint32_t>(sum);
  }
}

}  // namespace avi
