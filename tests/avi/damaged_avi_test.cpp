// Files that are cut off or lie about themselves: they are refused, or read as far as they go, and never more than
// that.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "avi/qavi.h"
#include "tests/model/avi_model.h"
#include "tests/support/avi_files.h"
#include "tests/support/file_bytes.h"
#include "tests/support/temporary_directory.h"

namespace {

using avi::QAVIError;
using avi::QAVIHandle;
using korvel_test::AviBytes;
using korvel_test::AviFile;
using korvel_test::BuildAviFile;
using korvel_test::PlainAvi;
using korvel_test::WriteFileBytes;

const std::vector<AviBytes> kFrames = {{1, 2, 3}, {4, 5, 6, 7}, {8}};

// Chunks of 12, 12 and 10 bytes behind the headers.
constexpr size_t kIndexOffset = 244 + 34;

struct SizeField {
  const char* name;
  size_t offset;
};

constexpr SizeField kSizeFields[] = {{"RIFF", 4},   {"hdrl", 16},  {"avih", 28},
                                     {"strl", 92},  {"strh", 104}, {"strf", 168},
                                     {"strn", 216}, {"movi", 236}, {"idx1", kIndexOffset + 4}};

void PutNumber(AviBytes& bytes, size_t offset, uint32_t number) {
  for (size_t i = 0; i < 4; ++i) bytes.at(offset + i) = static_cast<uint8_t>(number >> (8 * i));
}

class DamagedAvi : public testing::Test {
 protected:
  QAVIError OpenError(const AviBytes& bytes) {
    WriteFileBytes(path, bytes);
    QAVIHandle handle = 0;
    const QAVIError error = avi::QAVIOpenFile(path, &handle);
    if (error == QAVIError::Success) ReadAll(handle);
    return error;
  }

  // Asks for everything; what is told has to fit the file.
  static void ReadAll(QAVIHandle handle) {
    const AviFile file(handle);
    avi::MainHeader mainHeader;
    avi::QAVIGetMainHeader(handle, &mainHeader);
    for (size_t stream = 0; stream < 4; ++stream) {
      avi::StreamHeader streamHeader;
      avi::VideoFormat format;
      std::string name;
      avi::QAVIGetStreamHeader(handle, stream, &streamHeader);
      avi::QAVIGetStreamFormat(handle, stream, &format);
      avi::QAVIGetStreamName(handle, stream, &name);
      EXPECT_LT(name.size(), 1000u);
      for (size_t frame = 0; frame < 100; ++frame) {
        AviBytes buffer(1000);
        size_t size = 0;
        if (avi::QAVIGetData(handle, stream, frame, buffer, &size) == QAVIError::Success) {
          EXPECT_LE(size, 1000u);
        }
      }
    }
  }

  const AviBytes whole = BuildAviFile(PlainAvi(kFrames));
  korvel_test::TemporaryDirectory directory;
  std::string path = directory.File("damaged.avi");
};

TEST_F(DamagedAvi, IsReadIfItIsWhole) {
  EXPECT_EQ(OpenError(whole), QAVIError::Success);
  AviBytes more = whole;
  more.resize(whole.size() + 100, 0xFF);
  EXPECT_EQ(OpenError(more), QAVIError::Success) << "what follows the file's form isn't looked at";
}

TEST_F(DamagedAvi, IsRefusedIfItIsCutOffAnywhere) {
  for (size_t size = 0; size < whole.size(); ++size) {
    EXPECT_EQ(OpenError({whole.begin(), whole.begin() + static_cast<ptrdiff_t>(size)}), QAVIError::ParsingFailed)
        << size;
  }
}

TEST_F(DamagedAvi, IsRefusedIfASizeReachesBeyondTheFile) {
  for (const SizeField& field : kSizeFields) {
    for (const uint32_t size : {0xFFFFFFFFu, 0xFFFFFFFEu, 0x7FFFFFFFu, static_cast<uint32_t>(whole.size())}) {
      AviBytes damaged = whole;
      PutNumber(damaged, field.offset, size);
      EXPECT_EQ(OpenError(damaged), QAVIError::ParsingFailed) << field.name << " of " << size;
    }
  }
}

TEST_F(DamagedAvi, IsRefusedIfItClaimsToBeLongerThanItIs) {
  // A whole chunk wouldn't fit there, so that nobody would miss it.
  for (uint32_t more = 1; more < 8; ++more) {
    AviBytes damaged = whole;
    PutNumber(damaged, 4, static_cast<uint32_t>(whole.size()) - 8 + more);
    EXPECT_EQ(OpenError(damaged), QAVIError::ParsingFailed) << more;
  }
}

TEST_F(DamagedAvi, IsRefusedIfAListIsTooShortForItsType) {
  for (const size_t offset : {4u, 16u, 92u, 236u}) {
    for (const uint32_t size : {0u, 1u, 3u}) {
      AviBytes damaged = whole;
      PutNumber(damaged, offset, size);
      EXPECT_EQ(OpenError(damaged), QAVIError::ParsingFailed) << "at " << offset;
    }
  }
}

// Whatever is one byte further or nearer, the file is refused or read within its bounds.
TEST_F(DamagedAvi, IsReadWithinItsBoundsWithAnyWrongSize) {
  for (const SizeField& field : kSizeFields) {
    for (uint32_t size = 0; size < whole.size(); ++size) {
      AviBytes damaged = whole;
      PutNumber(damaged, field.offset, size);
      const QAVIError error = OpenError(damaged);
      EXPECT_TRUE(error == QAVIError::Success || error == QAVIError::ParsingFailed)
          << field.name << " of " << size << ": " << static_cast<int>(error);
    }
  }
}

TEST_F(DamagedAvi, IsReadWithinItsBoundsWithAnyWrongByte) {
  for (size_t offset = 0; offset < whole.size(); ++offset) {
    for (const uint8_t value : {uint8_t{0}, uint8_t{1}, uint8_t{0x7F}, uint8_t{0xFF}}) {
      AviBytes damaged = whole;
      damaged[offset] = value;
      const QAVIError error = OpenError(damaged);
      EXPECT_TRUE(error == QAVIError::Success || error == QAVIError::ParsingFailed) << offset;
    }
  }
}

TEST_F(DamagedAvi, HasNoHeaderIfItsChunkIsTooShort) {
  // The rest of each header becomes a chunk of its own that nobody knows.
  struct Case {
    size_t sizeOffset;
    uint32_t full;
  };
  for (const Case& header : {Case{28, 56}, Case{104, 56}, Case{168, 40}}) {
    AviBytes damaged = whole;
    PutNumber(damaged, header.sizeOffset, header.full - 12);
    PutNumber(damaged, header.sizeOffset + 4 + header.full - 12, 0x20202020);
    PutNumber(damaged, header.sizeOffset + 4 + header.full - 8, 4);
    WriteFileBytes(path, damaged);
    const AviFile file(AviFile::Open(path));
    avi::MainHeader mainHeader;
    avi::StreamHeader streamHeader;
    avi::VideoFormat format;
    const auto expected = [&](size_t offset) {
      return header.sizeOffset == offset ? QAVIError::NoChunk : QAVIError::Success;
    };
    EXPECT_EQ(avi::QAVIGetMainHeader(file.Handle(), &mainHeader), expected(28));
    EXPECT_EQ(avi::QAVIGetStreamHeader(file.Handle(), 0, &streamHeader), expected(104));
    EXPECT_EQ(avi::QAVIGetStreamFormat(file.Handle(), 0, &format), expected(168));
  }
}

TEST_F(DamagedAvi, IsRefusedWithoutAListOfFrames) {
  AviBytes damaged = whole;
  damaged[240] = 'M';
  EXPECT_EQ(OpenError(damaged), QAVIError::ParsingFailed);
}

TEST_F(DamagedAvi, IsRefusedIfItIsOfAnotherKind) {
  for (const size_t offset : {0u, 8u}) {
    AviBytes damaged = whole;
    damaged[offset] = 'x';
    EXPECT_EQ(OpenError(damaged), QAVIError::ParsingFailed);
  }
}

TEST_F(DamagedAvi, GivesNoFrameThatItsIndexPutsElsewhere) {
  AviBytes damaged = whole;
  PutNumber(damaged, kIndexOffset + 8 + 8, 0xFFFFFFFF);    // where frame 0 is
  PutNumber(damaged, kIndexOffset + 24 + 12, 0xFFFFFFFF);  // the size of frame 1
  PutNumber(damaged, kIndexOffset + 40, 0x63643939);       // frame 2 is of stream 99
  WriteFileBytes(path, damaged);
  const AviFile file(AviFile::Open(path));
  AviBytes buffer(1000);
  size_t size = 0;
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 0, 0, buffer, &size), QAVIError::ReadFailed);
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 0, 1, buffer, &size), QAVIError::BufferTooSmall);
  EXPECT_EQ(avi::QAVIGetData(file.Handle(), 0, 2, buffer, &size), QAVIError::NoIndexEntry);
}

TEST_F(DamagedAvi, IsRefusedIfItsListsNestWithoutEnd) {
  AviBytes nested = whole;
  // Lists in lists in place of the headers, each 12 bytes shorter than the one around it.
  for (size_t offset = 12; offset + 12 <= 232; offset += 12) {
    const AviBytes head = {'L', 'I', 'S', 'T', 0, 0, 0, 0, 'h', 'd', 'r', 'l'};
    std::copy(head.begin(), head.end(), nested.begin() + static_cast<ptrdiff_t>(offset));
    PutNumber(nested, offset + 4, static_cast<uint32_t>(232 - offset - 8));
  }
  EXPECT_EQ(OpenError(nested), QAVIError::ParsingFailed);
}

TEST_F(DamagedAvi, IsRefusedIfItHasChunksWithoutEnd) {
  AviBytes many = whole;
  many.resize(many.size() + 8 * 5000);  // of no name and no bytes
  PutNumber(many, 4, static_cast<uint32_t>(many.size() - 8));
  EXPECT_EQ(OpenError(many), QAVIError::ParsingFailed);
}

// Whoever appends to such a file must not crash either.
TEST_F(DamagedAvi, CanBeAppendedToOrIsRefused) {
  for (const SizeField& field : kSizeFields) {
    for (uint32_t size = 0; size < whole.size(); size += 3) {
      AviBytes damaged = whole;
      PutNumber(damaged, field.offset, size);
      WriteFileBytes(path, damaged);
      QAVIHandle handle = 0;
      if (avi::QAVIModifyFile(path, &handle) != QAVIError::Success) continue;
      avi::QAVISetData(handle, 0, AviBytes{1, 2, 3});
      EXPECT_EQ(avi::QAVICloseFile(handle), QAVIError::Success) << field.name << " of " << size;
      EXPECT_LT(korvel_test::ReadFileBytes(path).size(), 2000u);
    }
  }
}

// Such a list doesn't count its last frame's padding.
TEST_F(DamagedAvi, HasItsNewFrameWhereTheIndexTellsBehindAListOfOddSize) {
  AviBytes odd = whole;
  PutNumber(odd, 236, 4 + 34 - 1);
  WriteFileBytes(path, odd);
  {
    const AviFile file(AviFile::Modify(path));
    file.Append({{9, 10, 11}});
  }
  std::vector<AviBytes> frames = kFrames;
  frames.push_back({9, 10, 11});
  EXPECT_EQ(korvel_test::ReadFileBytes(path), BuildAviFile(PlainAvi(frames)));
}

// Frames grow over what stands behind them, and the index over what stands behind it.
TEST_F(DamagedAvi, IsNotAppendedToUnlessFramesAndIndexComeLast) {
  const AviBytes junk = {'J', 'U', 'N', 'K', 0, 0, 0, 0};
  const AviBytes headers(whole.begin() + 12, whole.begin() + 232);
  const AviBytes frames(whole.begin() + 232, whole.begin() + kIndexOffset);
  const AviBytes index(whole.begin() + kIndexOffset, whole.end());
  const auto modifyError = [&](const std::vector<AviBytes>& chunks) {
    AviBytes file(whole.begin(), whole.begin() + 12);
    for (const AviBytes& chunk : chunks) file.insert(file.end(), chunk.begin(), chunk.end());
    PutNumber(file, 4, static_cast<uint32_t>(file.size() - 8));
    EXPECT_EQ(OpenError(file), QAVIError::Success);
    QAVIHandle handle = 0;
    const QAVIError error = avi::QAVIModifyFile(path, &handle);
    if (error == QAVIError::Success) {
      EXPECT_EQ(avi::QAVICloseFile(handle), QAVIError::Success);
    }
    return error;
  };
  EXPECT_EQ(modifyError({headers, junk, frames, index}), QAVIError::Success);
  EXPECT_EQ(modifyError({headers, frames}), QAVIError::Success);
  EXPECT_EQ(modifyError({index, headers, frames}), QAVIError::ParsingFailed);
  EXPECT_EQ(modifyError({headers, frames, junk, index}), QAVIError::ParsingFailed);
  EXPECT_EQ(modifyError({headers, frames, index, junk}), QAVIError::ParsingFailed);
}

TEST_F(DamagedAvi, KeepsAFormWithinTheForm) {
  const AviBytes form = {'R', 'I', 'F', 'F', 4, 0, 0, 0, 'A', 'V', 'I', ' '};
  AviBytes file = whole;
  file.insert(file.begin() + 12, form.begin(), form.end());
  PutNumber(file, 4, static_cast<uint32_t>(file.size() - 8));
  WriteFileBytes(path, file);
  { const AviFile modified(AviFile::Modify(path)); }
  EXPECT_EQ(korvel_test::ReadFileBytes(path), file);
}

}  // namespace
