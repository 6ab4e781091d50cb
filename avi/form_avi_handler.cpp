#include "avi/form_avi_handler.h"

#include <algorithm>
#include <utility>

namespace avi {
namespace {

constexpr uint64_t kHeadByteCount = decltype(kChunkHeadLayout)::kByteCount;
constexpr uint32_t kTypeByteCount = 4;
constexpr uint32_t kIndexEntryByteCount = static_cast<uint32_t>(decltype(kIndexEntryLayout)::kByteCount);

// How often frame counts go up to the main header.
constexpr uint64_t kFramesBetweenFixUps = 126;

// Files nest lists three deep and have a few dozen chunks beside their frames; more than this is no file to trust.
constexpr uint32_t kDeepestList = 8;
constexpr size_t kMostChunks = 4096;

constexpr char kDefaultStreamName[] = "stream name";

template <size_t byteCount>
std::vector<uint8_t> ToVector(const std::array<uint8_t, byteCount>& bytes) {
  return {bytes.begin(), bytes.end()};
}

std::unique_ptr<RIFFchunk> MakeChunk(uint32_t id, std::vector<uint8_t> data) {
  auto chunk = std::make_unique<RIFFchunk>(id);
  chunk->size = static_cast<uint32_t>(data.size());
  chunk->data = std::move(data);
  return chunk;
}

std::unique_ptr<RIFFchunk> MakeList(uint32_t type) { return std::make_unique<RIFFchunk>(kList, type); }

// The headers of a new file; the user of a file sets its own.
std::vector<uint8_t> DefaultMainHeader() {
  // Intended: one stream, however many there are.
  return ToVector(kMainHeaderLayout.Encode({.flags = 0x810, .streams = 1}));
}

std::vector<uint8_t> DefaultStreamHeader() {
  return ToVector(kStreamHeaderLayout.Encode({.type = kVids, .handler = kMjpg, .scale = 1, .rate = 25}));
}

std::vector<uint8_t> DefaultStreamFormat(size_t stream) {
  switch (stream) {
    case 0:
      return ToVector(kVideoFormatLayout.Encode({.size = 40, .planes = 1, .bitCount = 24}));
    case 1:
      return ToVector(kWaveFormatLayout.Encode(
          {.tag = 1, .channels = 2, .samplesPerSecond = 44100, .blockAlign = 4, .bitsPerSample = 16}));
    default:
      return {};
  }
}

// The stream that a chunk's id names; nothing for an id that isn't a frame's.
std::optional<size_t> StreamOfId(uint32_t id) {
  const uint32_t tens = (id & 0xFF) - '0';
  const uint32_t units = (id >> 8 & 0xFF) - '0';
  if (tens > 9 || units > 9) return std::nullopt;
  return size_t{tens} * 10 + units;
}

// Chunks of odd size are followed by one byte. Intended: it is the first character of the chunk's id, not a zero.
std::array<uint8_t, 1> PaddingOf(uint32_t id) { return {static_cast<uint8_t>(id)}; }

std::span<const uint8_t> PaddingFor(const std::array<uint8_t, 1>& padding, size_t size) {
  return {padding.data(), size & 1};
}

std::vector<uint8_t>* DataOf(RIFFchunk* chunk, size_t least) {
  return chunk != nullptr && chunk->data.size() >= least ? &chunk->data : nullptr;
}

template <class Layout>
auto DecodeData(const Layout& layout, const std::vector<uint8_t>& data) {
  typename Layout::Bytes bytes;
  std::copy_n(data.begin(), bytes.size(), bytes.begin());
  return layout.Decode(bytes);
}

template <class Layout, class Record>
void EncodeData(const Layout& layout, const Record& record, std::vector<uint8_t>& data) {
  const auto bytes = layout.Encode(record);
  std::copy(bytes.begin(), bytes.end(), data.begin());
}

uint32_t TypeOf(const std::array<uint8_t, kTypeByteCount>& bytes) {
  uint32_t type = 0;
  for (size_t i = 0; i < kTypeByteCount; ++i) type |= uint32_t{bytes.at(i)} << (8 * i);
  return type;
}

}  // namespace

uint32_t FORMaviHandler::FrameChunkId(size_t stream, uint32_t streamType) {
  const char* kind = "db";
  if (streamType == kVids) kind = "dc";
  if (streamType == kAuds) kind = "wb";
  if (streamType == kTxts) kind = "xx";
  const char text[5] = {static_cast<char>('0' + stream / 10), static_cast<char>('0' + stream % 10), kind[0], kind[1],
                        '\0'};
  return FourCc(text);
}

QAVIError FORMaviHandler::BuildTree(size_t streams) {
  if (streams < 1 || streams > kMostStreams) return QAVIError::NoSuchStream;
  FreeTree();
  root_ = std::make_unique<RIFFchunk>(kRiff, kAvi);
  RIFFchunk& hdrl = root_->AddChild(MakeList(kHdrl));
  NoteChunk(hdrl.AddChild(MakeChunk(kAvih, DefaultMainHeader())));
  for (size_t stream = 0; stream < streams; ++stream) {
    RIFFchunk& strl = hdrl.AddChild(MakeList(kStrl));
    NoteChunk(strl.AddChild(MakeChunk(kStrh, DefaultStreamHeader())));
    NoteChunk(strl.AddChild(MakeChunk(kStrf, DefaultStreamFormat(stream))));
    // The text's terminating zero is part of the chunk.
    NoteChunk(strl.AddChild(
        MakeChunk(kStrn, std::vector<uint8_t>(std::begin(kDefaultStreamName), std::end(kDefaultStreamName)))));
  }
  NoteChunk(root_->AddChild(MakeList(kMovi)));
  NoteChunk(root_->AddChild(MakeChunk(kIdx1, {})));
  pendingOffset_ = movi_->size;
  return QAVIError::Success;
}

void FORMaviHandler::FreeTree() {
  root_.reset();
  mainHeader_ = movi_ = idx1_ = nullptr;
  streams_ = {};
  chunkCount_ = 0;
  pendingOffset_ = 0;
  frameCount_ = 0;
}

void FORMaviHandler::NoteChunk(RIFFchunk& chunk) {
  // The n-th header of a kind is that of stream n; streams beyond the fourth are passed over.
  const auto note = [&](RIFFchunk* Stream::*member) {
    for (Stream& stream : streams_) {
      if (stream.*member == nullptr) {
        stream.*member = &chunk;
        return;
      }
    }
  };
  const auto noteFirst = [&](RIFFchunk*& place) {
    if (place == nullptr) place = &chunk;
  };
  switch (chunk.id) {
    case kList:
      if (chunk.parentType == kMovi) noteFirst(movi_);
      break;
    case kAvih:
      noteFirst(mainHeader_);
      break;
    case kStrh:
      note(&Stream::header);
      break;
    case kStrf:
      note(&Stream::format);
      break;
    case kStrn:
      note(&Stream::name);
      break;
    case kIdx1:
      noteFirst(idx1_);
      break;
    default:
      break;
  }
}

bool FORMaviHandler::ReadTree(const CFile64& file) {
  FreeTree();
  decltype(kChunkHeadLayout)::Bytes bytes;
  std::array<uint8_t, kTypeByteCount> type;
  if (!file.ReadAt(0, bytes) || !file.ReadAt(kHeadByteCount, type)) return false;
  const ChunkHead head = kChunkHeadLayout.Decode(bytes);
  const uint64_t end = kHeadByteCount + head.size;
  if (head.id != kRiff || TypeOf(type) != kAvi || head.size < kTypeByteCount || end > file.Size()) return false;

  root_ = std::make_unique<RIFFchunk>(kRiff, kAvi);
  root_->size = head.size;
  if (!ReadChildren(file, *root_, kHeadByteCount + kTypeByteCount, end) || movi_ == nullptr) {
    FreeTree();
    return false;
  }
  // A list of odd size is padded like any chunk.
  pendingOffset_ = static_cast<uint32_t>(movi_->Length() - kHeadByteCount);
  return true;
}

bool FORMaviHandler::ReadUnfinishedTree(const CFile64& file) {
  if (BuildTree(1) == QAVIError::Success && ReadUnfinishedChunk(file, *root_, 0)) return true;
  FreeTree();
  return false;
}

// What the first writing of the tree and the frames after it have made of a chunk.
bool FORMaviHandler::ReadUnfinishedChunk(const CFile64& file, RIFFchunk& chunk, uint64_t position) {
  chunk.position = position;
  if (&chunk == idx1_) return true;  // a frame is in its place
  decltype(kChunkHeadLayout)::Bytes bytes;
  if (!file.ReadAt(position, bytes)) return false;
  const ChunkHead head = kChunkHeadLayout.Decode(bytes);
  if (&chunk == mainHeader_ && head.id != chunk.id) return file.ReadAt(position, chunk.data);
  const bool hasFinalSize = &chunk != root_.get() && &chunk != movi_;
  if (head.id != chunk.id || (hasFinalSize && head.size != chunk.size)) return false;
  position += kHeadByteCount;
  if (!chunk.IsList()) return file.ReadAt(position, chunk.data);

  std::array<uint8_t, kTypeByteCount> type;
  if (!file.ReadAt(position, type) || TypeOf(type) != chunk.parentType) return false;
  position += kTypeByteCount;
  for (const auto& child : chunk.children) {
    if (!ReadUnfinishedChunk(file, *child, position)) return false;
    position += child->Length();
  }
  return true;
}

bool FORMaviHandler::HasWholeIndex(const CFile64& file) const {
  const std::optional<MainHeader> header = GetMainHeader();
  if (movi_ == nullptr || !header || header->totalFrames != FrameCount(0)) return false;
  uint64_t length = kTypeByteCount;
  for (const Stream& stream : streams_) {
    for (const IndexEntry& entry : stream.index) {
      decltype(kChunkHeadLayout)::Bytes bytes;
      if (!file.ReadAt(movi_->position + kHeadByteCount + entry.offset, bytes)) return false;
      const ChunkHead head = kChunkHeadLayout.Decode(bytes);
      if (head.id != entry.id || head.size != entry.size) return false;
      length += RIFFchunk::LengthOf(entry.size);
    }
  }
  return length == movi_->Length() - kHeadByteCount;
}

uint64_t FORMaviHandler::FramesPosition() const { return movi_->position + kHeadByteCount + kTypeByteCount; }

std::optional<MainHeader> FORMaviHandler::GetMainHeader() const {
  const std::vector<uint8_t>* const data = DataOf(mainHeader_, decltype(kMainHeaderLayout)::kByteCount);
  if (data == nullptr) return std::nullopt;
  return DecodeData(kMainHeaderLayout, *data);
}

size_t FORMaviHandler::FrameCount(size_t stream) const { return streams_.at(stream).index.size(); }

bool FORMaviHandler::CanGrow() const {
  if (!root_ || movi_ == nullptr) return false;
  const auto& chunks = root_->children;
  if (idx1_ == nullptr) return chunks.back().get() == movi_;
  return chunks.size() > 1 && chunks.back().get() == idx1_ && chunks[chunks.size() - 2].get() == movi_;
}

bool FORMaviHandler::HasFrames() const { return movi_ != nullptr && movi_->size > kTypeByteCount; }

bool FORMaviHandler::ReadChildren(const CFile64& file, RIFFchunk& list, uint64_t position, uint64_t end) {
  while (position < end && end - position >= kHeadByteCount) {
    decltype(kChunkHeadLayout)::Bytes bytes;
    if (++chunkCount_ > kMostChunks || !file.ReadAt(position, bytes)) return false;
    const ChunkHead head = kChunkHeadLayout.Decode(bytes);
    const uint64_t payload = position + kHeadByteCount;
    if (head.size > end - payload) return false;

    RIFFchunk& chunk = list.AddReadChild(std::make_unique<RIFFchunk>(head.id));
    chunk.size = head.size;
    chunk.position = position;
    if (chunk.IsList()) {
      std::array<uint8_t, kTypeByteCount> type;
      if (head.size < kTypeByteCount || !file.ReadAt(payload, type)) return false;
      chunk.parentType = TypeOf(type);
      // Frames are not loaded, and what a form within the form holds is not looked at.
      if (chunk.id == kList && chunk.parentType != kMovi &&
          (chunk.depth > kDeepestList || !ReadChildren(file, chunk, payload + kTypeByteCount, payload + head.size))) {
        return false;
      }
    } else if (chunk.id == kIdx1 && chunk.parentType == kAvi) {
      if (!ReadIndex(file, chunk)) return false;
    } else if ((chunk.id == kAvih && chunk.parentType == kHdrl) ||
               ((chunk.id == kStrh || chunk.id == kStrf || chunk.id == kStrn) && chunk.parentType == kStrl)) {
      chunk.data.resize(head.size);
      if (!file.ReadAt(payload, chunk.data)) return false;
    } else {
      position += chunk.Length();
      continue;
    }
    NoteChunk(chunk);
    position += chunk.Length();
  }
  return true;
}

bool FORMaviHandler::ReadIndex(const CFile64& file, RIFFchunk& chunk) {
  // By pieces: what a damaged file calls its index may be gibibytes.
  constexpr uint32_t kMostAtOnce = 4096 * kIndexEntryByteCount;
  const uint32_t end = chunk.size - chunk.size % kIndexEntryByteCount;
  std::vector<uint8_t> bytes;
  for (uint32_t begin = 0; begin < end; begin += static_cast<uint32_t>(bytes.size())) {
    bytes.resize(std::min(kMostAtOnce, end - begin));
    if (!file.ReadAt(chunk.position + kHeadByteCount + begin, bytes)) return false;
    decltype(kIndexEntryLayout)::Bytes entryBytes;
    for (size_t i = 0; i < bytes.size(); i += kIndexEntryByteCount) {
      std::copy_n(bytes.begin() + static_cast<ptrdiff_t>(i), entryBytes.size(), entryBytes.begin());
      const IndexEntry entry = kIndexEntryLayout.Decode(entryBytes);
      const std::optional<size_t> stream = StreamOfId(entry.id);
      if (stream && *stream < kMostStreams) streams_.at(*stream).index.push_back(entry);
    }
  }
  return true;
}

bool FORMaviHandler::WriteTree(CFile64& file) {
  if (!root_) return false;
  // Frames of the other streams are not in the index.
  if (idx1_ != nullptr) idx1_->size = static_cast<uint32_t>(streams_.front().index.size() * kIndexEntryByteCount);
  FixUp();
  return WriteChunk(file, *root_, 0);
}

bool FORMaviHandler::WriteChunk(CFile64& file, RIFFchunk& chunk, uint64_t position) {
  chunk.position = position;
  const auto head = kChunkHeadLayout.Encode({.id = chunk.id, .size = chunk.size});
  if (&chunk == idx1_) return file.WriteAt(position, {head}) && WriteIndex(file, position + kHeadByteCount);
  if (!chunk.IsList()) {
    // What a file holds beside the chunks of this tree stays as it is.
    if (chunk.data.size() != chunk.size) return file.WriteAt(position, {head});
    const auto padding = PaddingOf(chunk.id);
    return file.WriteAt(position, {head, chunk.data, PaddingFor(padding, chunk.size)});
  }

  std::array<uint8_t, kTypeByteCount> type;
  for (size_t i = 0; i < kTypeByteCount; ++i) type.at(i) = static_cast<uint8_t>(chunk.parentType >> (8 * i));
  bool isWritten = file.WriteAt(position, {head, type});
  position += kHeadByteCount + kTypeByteCount;
  for (const auto& child : chunk.children) {
    isWritten = WriteChunk(file, *child, position) && isWritten;
    position += child->Length();
  }
  return isWritten;
}

// In pieces, so that the end of a file takes no memory, however many frames it has.
bool FORMaviHandler::WriteIndex(CFile64& file, uint64_t position) const {
  constexpr size_t kMostEntries = 512;
  std::array<uint8_t, kMostEntries * kIndexEntryByteCount> bytes;
  std::span<const IndexEntry> left = streams_.front().index;
  while (!left.empty()) {
    const auto piece = left.first(std::min(left.size(), kMostEntries));
    auto* next = bytes.begin();
    for (const IndexEntry& entry : piece) {
      const auto entryBytes = kIndexEntryLayout.Encode(entry);
      next = std::copy(entryBytes.begin(), entryBytes.end(), next);
    }
    const size_t byteCount = piece.size() * kIndexEntryByteCount;
    if (!file.WriteAt(position, {std::span(bytes).first(byteCount)})) return false;
    position += byteCount;
    left = left.subspan(piece.size());
  }
  return true;
}

// Takes the number of frames and the largest one from stream 0's header to the main header.
void FORMaviHandler::FixUp() {
  std::vector<uint8_t>* const mainData = MainHeaderData();
  const std::vector<uint8_t>* const streamData = StreamHeaderData(0);
  if (mainData != nullptr && streamData != nullptr) {
    const StreamHeader stream = DecodeData(kStreamHeaderLayout, *streamData);
    MainHeader header = DecodeData(kMainHeaderLayout, *mainData);
    header.totalFrames = stream.length;
    header.suggestedBufferSize = stream.suggestedBufferSize;
    EncodeData(kMainHeaderLayout, header, *mainData);
  }
  root_->SumSizes();
}

bool FORMaviHandler::HasRoomFor(size_t frameSize) const {
  if (!root_ || movi_ == nullptr || frameSize > kLargestForm) return false;
  const uint64_t length = RIFFchunk::LengthOf(static_cast<uint32_t>(frameSize));
  uint64_t fileSize = kTypeByteCount + kIndexEntryByteCount + length;
  for (const auto& child : root_->children) fileSize += child->Length();
  return fileSize <= kLargestForm;
}

QAVIError FORMaviHandler::WriteFrame(CFile64& file, size_t stream, std::span<const uint8_t> frame, uint32_t flags) {
  if (stream >= kMostStreams) return QAVIError::NoSuchStream;
  std::vector<uint8_t>* const data = StreamHeaderData(stream);
  if (data == nullptr || movi_ == nullptr) return QAVIError::NoHeaderTree;
  if (!HasRoomFor(frame.size())) return QAVIError::DiskFull;

  StreamHeader header = DecodeData(kStreamHeaderLayout, *data);
  const auto size = static_cast<uint32_t>(frame.size());
  const uint32_t id = FrameChunkId(stream, header.type);
  const auto head = kChunkHeadLayout.Encode({.id = id, .size = size});
  const auto padding = PaddingOf(id);
  std::vector<IndexEntry>& index = streams_.at(stream).index;
  // Memory is taken before the frame is written, so that what is in the file is in the index.
  index.push_back({.id = id, .flags = flags, .offset = pendingOffset_, .size = size});
  const uint64_t position = movi_->position + movi_->Length();
  const uint64_t end = std::max(position, file.Size());
  if (!file.WriteAt(position, {head, frame, PaddingFor(padding, size)})) {
    index.pop_back();
    // What was written of it could be longer than the index, and would stay behind it.
    file.Truncate(end);
    return QAVIError::DiskFull;
  }

  ++header.length;
  header.suggestedBufferSize = std::max(header.suggestedBufferSize, size);
  EncodeData(kStreamHeaderLayout, header, *data);
  const auto length = static_cast<uint32_t>(RIFFchunk::LengthOf(size));
  pendingOffset_ += length;
  movi_->size = pendingOffset_;
  if (idx1_ != nullptr) idx1_->size += kIndexEntryByteCount;
  if (++frameCount_ % kFramesBetweenFixUps == 0) {
    FixUp();
    // Intended: the header goes to where its chunk begins, not behind the chunk's head. The last writing of the tree
    // sets that right.
    if (mainHeader_ != nullptr) file.WriteAt(mainHeader_->position, {mainHeader_->data});
  }
  return QAVIError::Success;
}

QAVIError FORMaviHandler::ReadFrame(const CFile64& file, size_t stream, size_t frame, std::span<uint8_t> buffer,
                                    size_t* size) const {
  if (stream >= kMostStreams) return QAVIError::NoSuchStream;
  const std::vector<IndexEntry>& index = streams_.at(stream).index;
  if (frame >= index.size() || movi_ == nullptr) return QAVIError::NoIndexEntry;
  const IndexEntry& entry = index[frame];
  if (entry.size > buffer.size()) return QAVIError::BufferTooSmall;
  // From the head of "movi" to its type, and from a frame's head to its payload.
  const uint64_t position = movi_->position + kHeadByteCount + entry.offset + kHeadByteCount;
  if (!file.ReadAt(position, buffer.first(entry.size))) return QAVIError::ReadFailed;
  *size = entry.size;
  return QAVIError::Success;
}

std::vector<uint8_t>* FORMaviHandler::MainHeaderData() {
  return DataOf(mainHeader_, decltype(kMainHeaderLayout)::kByteCount);
}

std::vector<uint8_t>* FORMaviHandler::StreamHeaderData(size_t stream) {
  return stream < kMostStreams ? DataOf(streams_.at(stream).header, decltype(kStreamHeaderLayout)::kByteCount)
                               : nullptr;
}

std::vector<uint8_t>* FORMaviHandler::StreamFormatData(size_t stream) {
  return stream < kMostStreams ? DataOf(streams_.at(stream).format, decltype(kVideoFormatLayout)::kByteCount) : nullptr;
}

RIFFchunk* FORMaviHandler::StreamName(size_t stream) {
  return stream < kMostStreams ? streams_.at(stream).name : nullptr;
}

}  // namespace avi
