#!/usr/bin/env bash
# Tests korvel formats: what other programs call the formats, against their headers and the programs themselves as far
# as they are there. Arguments: path of the command, a C compiler.
set -euo pipefail

# shellcheck source-path=SCRIPTDIR source=tool_checks.sh
source "$(dirname "$0")/tool_checks.sh"
readonly compiler=$2

names_of() {  # names_of: the formats that the last run listed
  awk '/^$/ {exit} NR > 1 {print $1}' out | tr '\n' ' '
}

# --- the lists

for words in opencv v4l2 libcamera gstreamer ffmpeg all; do
  succeeds formats --as $words
  check "--as $words lists 49 formats" [ "$(names_of | wc -w)" -eq 49 ]
  succeeds formats --as $words --markdown
  check "--as $words --markdown has 51 lines of equal columns" \
    [ "$(awk -F'|' '/^\|/ {print NF}' out | sort | uniq -c | awk '{print $1, NR}')" = "51 1" ]
  succeeds formats --as $words --json
  check "--as $words --json lists 49 formats" [ "$(grep -c '^    "name": "' out)" -eq 49 ]
done
if command -v python3 >/dev/null; then
  check "names are objects in JSON" python3 -c '
import json
rows = {row.pop("name"): row for row in json.load(open("out"))}
assert rows["BayerRG8"]["opencv"] == {"name": "CV_8UC1", "cvtColor": "COLOR_BayerBG2BGR", "remark": None}
assert rows["Mono10p"]["v4l2"] == {"name": None, "fourcc": None, "remark": None}
assert list(rows["RGB8"]) == ["opencv", "v4l2", "libcamera", "gstreamer", "ffmpeg"]'
fi

# --- by name

succeeds formats BayerRG12p
check "one format is listed alone" [ "$(grep -c '^0x' out)" -eq 1 ]
succeeds formats --as libcamera RGB8
check "RGB in memory has the other order in libcamera" grep -qE '^RGB8 +BGR888$' out
while read -r words name formats; do
  succeeds formats --as "$words" "$name"
  check "$name is $formats, not $(names_of)" [ "$(names_of)" = "$formats " ]
done <<'NAMES'
v4l2 V4L2_PIX_FMT_SRGGB10P BayerRG10g40Qrv
v4l2 SRGGB10P BayerRG10g40Qrv
v4l2 srggb10p BayerRG10g40Qrv
v4l2 pgAA BayerGR10g40Qrv
v4l2 pGAA BayerGB10g40Qrv
v4l2 Mono8 Mono8
opencv COLOR_BayerBG2BGR BayerRG8 BayerRG10 BayerRG12
opencv cv::CV_8UC4 RGBa8 BGRa8
gstreamer rggb BayerRG8
gstreamer video/x-raw,format=BGR BGR8
libcamera formats::SBGGR12_CSI2P BayerBG12g24Qrv
ffmpeg rgb48le RGB10 RGB12
all bayer_grbg8 BayerGR8
NAMES

fails 1 "Give one of opencv, v4l2, libcamera, gstreamer, ffmpeg, all." formats --as gimp
fails 1 "NAME: there is no pixel format 'bayer_rggb8'" formats --as v4l2 bayer_rggb8
fails 1 "Did you mean Mono12p?" formats mono12P
fails 1 "NAME: there is no pixel format 'V4L2_PIX_FMT_'" formats --as v4l2 V4L2_PIX_FMT_
fails 2 "--markdown requires --as" formats --markdown
fails 2 "--json excludes --markdown" formats --as all --markdown --json

# --- V4L2, against the kernel's header

korvel formats --as v4l2 | awk '/^$/ {exit} {print}' >v4l2.names
{
  echo '#include <linux/videodev2.h>'
  sed -nE "s/^\S+ +(V4L2_PIX_FMT_[A-Z0-9]+) +(.)(.)(.)(.)$/#ifdef \1\n_Static_assert(\1 == v4l2_fourcc('\2', '\3', '\4', '\5'), \"\1\");\n#else\n#error \"\1\"\n#endif/p" v4l2.names
  # Names with a remark may be missing from a header.
  sed -nE "s/^\S+ +(V4L2_PIX_FMT_[A-Z0-9]+) \([0-9]\) +(.)(.)(.)(.)$/#ifdef \1\n_Static_assert(\1 == v4l2_fourcc('\2', '\3', '\4', '\5'), \"\1\");\n#endif/p" v4l2.names
} >v4l2.c
check "all names of V4L2 are compared" [ "$(grep -c _Static_assert v4l2.c)" -eq "$(grep -c V4L2_PIX_FMT v4l2.names)" ]
check "V4L2 has these names, and these four characters for them" "$compiler" -x c -fsyntax-only v4l2.c

# --- OpenCV, against its header

imgproc=/usr/include/opencv4/opencv2/imgproc.hpp
if [[ -e $imgproc ]]; then
  pattern_of() { sed -nE 's/^Bayer(RG|GR|GB|BG)[0-9]+$/\1/; s/RG/RGGB/p; s/GR/GRBG/p; s/GB/GBRG/p; s/BG/BGGR/p' <<<"$1"; }
  korvel formats --as opencv | awk 'NR > 1 && $3 != "-" {print $1, $3}' >opencv.names
  while read -r format code; do
    if [[ $format == Bayer* ]]; then
      check "OpenCV calls $format $code" grep -qE " $code = [0-9]+, //!< equivalent to $(pattern_of "$format") " $imgproc
    else
      check "OpenCV has $code" grep -qE " $code +=" $imgproc
    fi
  done <opencv.names
fi

# --- FFmpeg, by what it makes of a frame

# Of a frame of 128 x 96 pixels, one in a red patch of the chart.
red_pixel() {  # red_pixel FILE CHANNELS
  od -An -v -tu1 -j $((($2) * (36 * 128 + 28))) -N "$2" "$1"
}

are_near() {  # are_near VALUES VALUES
  awk -v a="$1" -v b="$2" 'BEGIN {
    count = split(a, x)
    if (split(b, y) != count || count == 0) exit 1
    for (i = 1; i <= count; ++i) if (x[i] - y[i] > 5 || y[i] - x[i] > 5) exit 1
  }'
}

korvel simulate red.bin --format RGB8 --size 128x96 --noise 0 >out
korvel simulate grey.bin --format Mono8 --size 128x96 --noise 0 >out
red=$(red_pixel red.bin 3)
grey_of_red=$(red_pixel grey.bin 1)
korvel formats --as ffmpeg | awk 'NR > 1 && NF >= 2 && /^[A-Z]/ && $2 != "-" {print $1, $2, $3}' >ffmpeg.names
while read -r format name remark; do
  check "FFmpeg has $name" grep -qE "^I[^ ]* $name " <(ffmpeg -hide_banner -pix_fmts 2>err)
  [[ -z $remark ]] || continue
  korvel simulate frame.bin --format "$format" --size 128x96 --noise 0 >out
  to=rgb24 channels=3 expected=$red
  if [[ $format == Mono* ]]; then to=gray channels=1 expected=$grey_of_red; fi
  ffmpeg -v error -y -f rawvideo -pixel_format "$name" -video_size 128x96 -i frame.bin -pix_fmt $to -f rawvideo seen.bin \
    </dev/null
  seen=$(red_pixel seen.bin $channels)
  check "FFmpeg sees $format as $name: $seen where there is $expected" are_near "$seen" "$expected"
done <ffmpeg.names

ends_well
