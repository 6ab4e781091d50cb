#include "fuzz/avi_seeds.h"

#include <initializer_list>
#include <utility>

#include "fuzz/seed_edits.h"
#include "tests/model/avi_model.h"
#include "tests/support/small_pictures.h"

namespace korvel_fuzz {
namespace {

using korvel_test::AviBytes;

SeedBytes Joined(std::initializer_list<SeedBytes> parts) {
  SeedBytes joined;
  for (const SeedBytes& part : parts) joined.insert(joined.end(), part.begin(), part.end());
  return joined;
}

SeedBytes TextBytes(const char (&text)[5]) { return SeedBytes(text, text + 4); }

SeedBytes Chunk(const char (&id)[5], const SeedBytes& payload) {
  SeedBytes size(4);
  SetNumber(size, {"size", 0, 4}, payload.size());
  return Joined({TextBytes(id), size, payload, SeedBytes(payload.size() % 2, '0')});
}

SeedBytes List(const char (&type)[5], const SeedBytes& children) {
  return Chunk("LIST", Joined({TextBytes(type), children}));
}

SeedBytes Form(const SeedBytes& children) { return Chunk("RIFF", Joined({TextBytes("AVI "), children})); }

SeedBytes Part(const SeedBytes& file, size_t first, size_t end) {
  return {file.begin() + static_cast<ptrdiff_t>(first), file.begin() + static_cast<ptrdiff_t>(end)};
}

// Of 1 to 9 bytes, odd and even.
std::vector<AviBytes> SmallFrames(size_t count) {
  std::vector<AviBytes> frames;
  for (size_t i = 0; i < count; ++i) frames.emplace_back(i * 5 % 9 + 1, static_cast<uint8_t>(i));
  return frames;
}

constexpr size_t kHeaderLists = 12;
constexpr size_t kMainHeader = 24;
constexpr size_t kStreamList = 88;
constexpr size_t kFrameList = 232;
constexpr size_t kFirstFrame = 244;

constexpr HeaderField kFields[] = {
    {"riff_id", 0, 4},       {"riff_size", 4, 4},       {"form", 8, 4},         {"hdrl_id", 12, 4},
    {"hdrl_size", 16, 4},    {"hdrl_type", 20, 4},      {"avih_id", 24, 4},     {"avih_size", 28, 4},
    {"total_frames", 48, 4}, {"main_buffer", 60, 4},    {"strl_id", 88, 4},     {"strl_size", 92, 4},
    {"strl_type", 96, 4},    {"strh_id", 100, 4},       {"strh_size", 104, 4},  {"stream_type", 108, 4},
    {"length", 140, 4},      {"stream_buffer", 144, 4}, {"strf_id", 164, 4},    {"strf_size", 168, 4},
    {"strn_id", 212, 4},     {"strn_size", 216, 4},     {"movi_id", 232, 4},    {"movi_size", 236, 4},
    {"movi_type", 240, 4},   {"frame_id", 244, 4},      {"frame_size", 248, 4},
};

constexpr HeaderField kIndexFields[] = {
    {"idx1_id", 0, 4},      {"idx1_size", 4, 4},     {"entry_id", 8, 4},
    {"entry_flags", 12, 4}, {"entry_offset", 16, 4}, {"entry_size", 20, 4},
};

// Recordings of a few frames, and what they are while they are written.
void AppendRecordings(Seeds& seeds) {
  for (const size_t count : {0u, 1u, 3u, 130u}) {
    const korvel_test::AviModel recorded = korvel_test::RecordedAvi(16, 16, SmallFrames(count));
    const std::string name = Text(count) + "_frames";
    seeds.push_back({"plain_" + name, korvel_test::BuildAviFile(korvel_test::PlainAvi(SmallFrames(count)))});
    seeds.push_back({"unfinished_" + name, korvel_test::BuildAviFileBeforeClose(recorded)});
    const SeedBytes file = korvel_test::BuildAviFile(recorded);
    if (count == 3) {
      AppendWithCuts(seeds, name, file);
    } else {
      seeds.push_back({name, file});
    }
  }
}

// The chunks of a file in other orders, several times, not at all, and among others.
void AppendStructures(Seeds& seeds, const SeedBytes& file, size_t index) {
  const SeedBytes hdrl = Part(file, kHeaderLists, kFrameList);
  const SeedBytes movi = Part(file, kFrameList, index);
  const SeedBytes idx1 = Part(file, index, file.size());
  const auto append = [&](const std::string& name, const SeedBytes& children) {
    seeds.push_back({"with_" + name, Form(children)});
  };
  append("nothing", {});
  append("no_frames", Joined({hdrl, idx1}));
  append("no_index", Joined({hdrl, movi}));
  append("no_headers", Joined({movi, idx1}));
  append("index_first", Joined({idx1, hdrl, movi}));
  append("headers_last", Joined({movi, idx1, hdrl}));
  append("index_twice", Joined({hdrl, movi, idx1, idx1}));
  append("frames_twice", Joined({hdrl, movi, movi, idx1}));
  append("headers_twice", Joined({hdrl, hdrl, movi, idx1}));
  append("junk", Joined({Chunk("JUNK", SeedBytes(3)), hdrl, Chunk("JUNK", SeedBytes(6)), movi, idx1,
                         Chunk("JUNK", SeedBytes(1))}));
  append("info", Joined({List("INFO", Chunk("ISFT", {'a', 0})), hdrl, movi, idx1}));
  append("slack_behind_headers",
         Joined({List("hdrl", Joined({Part(hdrl, 12, hdrl.size()), SeedBytes(4)})), movi, idx1}));
  append("index_in_headers", Joined({List("hdrl", Joined({Part(hdrl, 12, hdrl.size()), idx1})), movi}));
  append("frames_in_headers", Joined({List("hdrl", Joined({Part(hdrl, 12, hdrl.size()), movi})), idx1}));
  append("records", Joined({hdrl, List("movi", List("rec ", Part(movi, 12, movi.size()))), idx1}));
  append("form_in_form", Joined({hdrl, movi, idx1, Form(Joined({hdrl, movi, idx1}))}));
  seeds.push_back({"with_another_form_behind", Joined({file, Form({})})});

  const SeedBytes mainHeader = Part(file, kMainHeader, kStreamList);
  const SeedBytes strl = Part(file, kStreamList, kFrameList);
  SeedBytes streams;
  for (size_t count = 0; count <= 6; ++count) {
    append(Text(count) + "_streams", Joined({List("hdrl", Joined({mainHeader, streams})), movi, idx1}));
    streams = Joined({streams, strl});
  }
  for (const size_t size : {0u, 1u, 39u, 55u}) {
    const SeedBytes shortStream = List("strl", Joined({Chunk("strh", SeedBytes(size)), Chunk("strf", SeedBytes(size)),
                                                       Chunk("strn", SeedBytes(size, 'x'))}));
    append("headers_of_" + Text(size) + "_bytes",
           Joined({List("hdrl", Joined({Chunk("avih", SeedBytes(size)), shortStream})), movi, idx1}));
  }

  SeedBytes nested = Chunk("JUNK", {});
  for (size_t depth = 1; depth <= 12; ++depth) {
    nested = List("INFO", nested);
    append(Text(depth) + "_lists_deep", Joined({hdrl, nested, movi, idx1}));
  }
  for (const size_t count : {4000u, 4090u, 4200u}) {
    SeedBytes many;
    for (size_t i = 0; i < count; ++i) many.insert(many.end(), {'J', 'U', 'N', 'K', 0, 0, 0, 0});
    append(Text(count) + "_chunks", Joined({hdrl, many, movi, idx1}));
  }
}

// Index entries of other streams and kinds, and of places that aren't there.
void AppendIndices(Seeds& seeds, const SeedBytes& file, size_t index) {
  const SeedBytes front = Part(file, kHeaderLists, index);
  for (const char* id : {"00db", "01wb", "02xx", "03pc", "04dc", "99dc", "0adc", "rec ", "7Fxx"}) {
    SeedBytes changed = file;
    for (size_t entry = index + 8; entry < file.size(); entry += 32) {
      for (size_t i = 0; i < 4; ++i) changed.at(entry + i) = static_cast<uint8_t>(id[i]);
    }
    seeds.push_back({std::string("with_entries_") + id, std::move(changed)});
  }
  const SeedBytes entries = Part(file, index + 8, file.size());
  for (size_t less = 1; less <= 17; ++less) {
    seeds.push_back({"with_index_less_" + Text(less),
                     Form(Joined({front, Chunk("idx1", Part(entries, 0, entries.size() - less))}))});
  }
  SeedBytes all = entries;
  for (size_t i = 0; i < 6; ++i) all = Joined({all, all});
  seeds.push_back({"with_long_index", Form(Joined({front, Chunk("idx1", all)}))});
}

}  // namespace

std::vector<Seed> AviSeeds() {
  Seeds seeds;
  AppendRecordings(seeds);
  const SeedBytes file = korvel_test::BuildAviFile(korvel_test::RecordedAvi(16, 16, SmallFrames(3)));
  constexpr size_t kIndexBytes = 8 + 3 * 16;
  const size_t index = file.size() - kIndexBytes;
  AppendFieldEdges(seeds, "3_frames", file, kFields);
  for (HeaderField field : kIndexFields) {
    field.offset += index;
    AppendFieldEdges(seeds, "3_frames", file, {&field, 1});
  }
  AppendStructures(seeds, file, index);
  AppendIndices(seeds, file, index);
  return seeds;
}

// Recordings that were never closed, or closed in part, and damaged ones.
std::vector<Seed> RepairAviSeeds() {
  Seeds seeds;
  for (const size_t count : {0u, 1u, 3u, 130u}) {
    const korvel_test::AviModel model = korvel_test::RecordedAvi(32, 16, korvel_test::SmallPictures(count));
    const std::string name = Text(count) + "_pictures";
    const SeedBytes whole = korvel_test::BuildAviFile(model);
    const SeedBytes unfinished = korvel_test::BuildAviFileBeforeClose(model);
    seeds.push_back({name, whole});
    if (count != 3) {
      seeds.push_back({"unfinished_" + name, unfinished});
      continue;
    }
    AppendWithCuts(seeds, "unfinished_" + name, unfinished);
    AppendWithCuts(seeds, "closing_" + name, whole);
    AppendFieldEdges(seeds, "unfinished_" + name, unfinished, kFields);
    for (size_t offset = kFirstFrame; offset < unfinished.size(); offset += 7) {
      SeedBytes damaged = unfinished;
      damaged[offset] = static_cast<uint8_t>(~damaged[offset]);
      seeds.push_back({name + "_damaged_at_" + Text(offset), std::move(damaged)});
    }
    const SeedBytes frames = Part(unfinished, kFirstFrame, unfinished.size());
    seeds.push_back({name + "_without_headers", frames});
    seeds.push_back({name + "_among_others", Joined({unfinished, Chunk("JUNK", SeedBytes(70000)), frames})});
  }
  return seeds;
}

std::vector<SeedBytes> AviWords() {
  std::vector<SeedBytes> words;
  for (const char* id : {"RIFF", "LIST", "AVI ", "hdrl", "strl", "movi", "rec ", "avih", "strh", "strf", "strn",
                         "idx1", "JUNK", "00dc", "01wb", "02db", "03xx", "vids", "auds", "txts", "MJPG"}) {
    words.emplace_back(id, id + 4);
  }
  return words;
}

}  // namespace korvel_fuzz
