#!/usr/bin/env bash
# Tests that docs/errors.md has every text of a failure that the library's sources have, and no other. Argument: the
# project.
set -euo pipefail

cd "$1"
failures=$(mktemp)
trap 'rm -f "$failures"' EXIT

find status core buffers processing io avi video api -name '*.cpp' -o -name '*.h' | sort | xargs cat |
  perl -0777 -Mutf8 -CSD -ne '
    # String literals that aren'"'"'t texts of failures, nor parts of them.
    my %other = map { $_ => 1 } ("AVI ", "libvideo status code", "stream name", "buffer size", "pixel format",
        "the image is too large for the file type", "a field reaches beyond its layout",
        "Highway has chosen another instruction set", "Exception (status=", ", location=", ", module_id=", ", txt=",
        "error: type=");

    s{(^|\s)//.*}{}g;
    s{^\s*\#include.*}{}mg;
    s{"\s*\n\s*"}{}g;  # adjacent literals are one
    my (%text, %literal);
    while (/"((?:[^"\\\n]|\\.)*)"/g) {
      my $text = $1 =~ s/\\(.)/$1/gr;
      $literal{$text} = 1;
      # Names have no blank; the rest is signatures of functions, and what stands between their parts.
      $text{$text} = 1 if $text =~ / / && $text =~ /[a-z]{2}/i && !$other{$text} &&
                          $text !~ /img::\w*(_accessor|_modifier)|img::$|processing::$|::PixelFormatId|\w\(.*&\)|vector</ &&
                          $text !~ /::.*\(|^(static|virtual|unsigned|void)\b|formatId\w* = |pixelFormat = |channel = |[TA]\w+ = |^<dep/;
    }

    open(my $page, "<", "docs/errors.md") or die;
    my @shown;
    local $/ = "\n";
    while (<$page>) {
      last if /^## Texts from elsewhere/;
      push @shown, $1 if /^\| `(.*?)` \| [^|]* \| ?[^|]*\|?$/ && !/^\| \d/;
    }
    die "no texts" if @shown < 100;

    for my $text (sort keys %text) {
      my $trimmed = $text =~ s/^\s+|\s+$//gr;
      print "the page lacks: $text\n" unless grep { index($_, $trimmed) >= 0 } @shown;
    }
    my $any = join "|", map { quotemeta } sort { length $b <=> length $a }
              map { s/^\s+|\s+$//gr } grep { /\w{2}/ } keys %literal;
    for my $shown (@shown) {
      for my $part (split /…/, $shown) {
        print "the code lacks: $part\n" unless $part =~ /^(?:[\s:.,]|$any)*$/;
      }
    }
    my %seen;
    print "twice: $_\n" for grep { $seen{$_}++ } @shown;
  ' >"$failures"

cat "$failures"
[[ ! -s $failures ]] && echo "all passed"
