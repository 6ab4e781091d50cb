// The one list of pixel formats inside the library: the public ones, taken from the exported header with their ids, and
// the internal ones. Enumerations, facts, dispatchers and instantiations are expansions of it.
#pragma once

#include "korvel/korvel.h"

// Internal ids, which never cross the exported interface: a memory layout without a meaning of its channels, to which
// formats are reduced where only the layout matters. Read as signed numbers they are negative. The columns are those
// of KORVEL_PIXEL_FORMAT_TABLE.
#define KORVEL_RAW_FORMAT_TABLE(ROW, X)                                         \
  ROW(X, _RawMipiPacked1Ch10, 0xFFF1110A, RawPacked1Ch, Mipi, 10)               \
  ROW(X, _RawMipiPacked1Ch12, 0xFFF1110C, RawPacked1Ch, Mipi, 12)               \
  ROW(X, _RawUnpacked1Ch8, 0xFFFF0108, Raw1Ch, Unpacked, 8)                     \
  ROW(X, _RawUnpacked1Ch10, 0xFFFF010A, Raw1Ch, Unpacked, 10)                   \
  ROW(X, _RawUnpacked1Ch12, 0xFFFF010C, Raw1Ch, Unpacked, 12)                   \
  ROW(X, _RawUnpacked3Ch8, 0xFFFF0308, Raw3Ch, Unpacked, 8)                     \
  ROW(X, _RawUnpacked3Ch10, 0xFFFF030A, Raw3Ch, Unpacked, 10)                   \
  ROW(X, _RawUnpacked3Ch12, 0xFFFF030C, Raw3Ch, Unpacked, 12)                   \
  ROW(X, _RawUnpacked4Ch8, 0xFFFF0408, Raw4Ch, Unpacked, 8)                     \
  ROW(X, _RawUnpacked4Ch10, 0xFFFF040A, Raw4Ch, Unpacked, 10)                   \
  ROW(X, _RawUnpacked4Ch12, 0xFFFF040C, Raw4Ch, Unpacked, 12)                   \
  ROW(X, _RawPackedNoAlignment1Ch10, 0xFFFF110A, RawPacked1Ch, NoAlignment, 10) \
  ROW(X, _RawPackedNoAlignment1Ch12, 0xFFFF110C, RawPacked1Ch, NoAlignment, 12) \
  ROW(X, _RawPacked10p32, 0xFFFF110D, RawPacked10p32, Word32, 10)

// X(name) for each public format, each public format and Invalid, and each internal id.
#define KORVEL_DETAIL_NAME_ONLY(X, name, id, pixelClass, layout, significantBits) X(name)
#define KORVEL_FOR_EACH_PUBLIC_FORMAT(X) KORVEL_PIXEL_FORMAT_TABLE(KORVEL_DETAIL_NAME_ONLY, X)
#define KORVEL_FOR_EACH_PUBLIC_FORMAT_AND_INVALID(X) X(Invalid) KORVEL_FOR_EACH_PUBLIC_FORMAT(X)
#define KORVEL_FOR_EACH_RAW_FORMAT(X) KORVEL_RAW_FORMAT_TABLE(KORVEL_DETAIL_NAME_ONLY, X)
