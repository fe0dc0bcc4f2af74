#!/usr/bin/env bash
# Whole-process timing of "qly convert big.md -o big.html" on 200,000 words with 2,000 emphasised
# words (target: 150 ms), against pandoc converting the same Markdown to a standalone HTML page (qly
# should be ten times faster); then what each picture adds to a whole export (target: 10 ms, encoding
# included), with 20 pictures of 640 × 480 as PNG (written as they are) and as BMP (encoded as PNG).
# Prints medians; without pandoc (or python3, which draws the pictures) that part is skipped.
# Usage: bench/html_vs_pandoc.sh [path/to/qly] [runs]
set -euo pipefail
qly=${1:-build/tools/qly/qly}
runs=${2:-7}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export QT_QPA_PLATFORM=offscreen

# 200,000 words in paragraphs of 80; every hundredth word bold or italic in turn.
awk 'BEGIN {
  split("the manuscript of a long novel written over years chapter and scene quiet harbour", w, " ");
  srand(7);
  for (i = 1; i <= 200000; i++) {
    word = w[int(rand() * 14) + 1];
    if (i % 100 == 0) { mk = ((i / 100) % 2) ? "**" : "*"; word = mk word mk }
    printf "%s%s", word, (i % 80 == 0) ? "\n\n" : " ";
  }
}' > "$work/big.md"

# Median wall time in milliseconds of running the command $n times.
median_ms() {
  local n=$1; shift
  local times=()
  for _ in $(seq "$n"); do
    local start end
    start=$(date +%s%N)
    "$@" > /dev/null
    end=$(date +%s%N)
    times+=($(( (end - start) / 1000000 )))
  done
  printf '%s\n' "${times[@]}" | sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'
}

echo "input: $(wc -w < "$work/big.md") words, $(grep -oE '\*+[a-z]+\*+' "$work/big.md" | wc -l) emphasised, $(wc -c < "$work/big.md") bytes; median of $runs runs"
qly_ms=$(median_ms "$runs" "$qly" convert "$work/big.md" -o "$work/big.html")
echo "qly convert big.md -o big.html: ${qly_ms} ms (target 150 ms)"
if command -v pandoc > /dev/null; then
  pandoc_ms=$(median_ms 3 pandoc -f markdown -t html -s --metadata title=big "$work/big.md" -o "$work/big-pandoc.html")
  echo "pandoc -f markdown -t html -s: ${pandoc_ms} ms"
  awk -v q="$qly_ms" -v p="$pandoc_ms" 'BEGIN { if (q > 0) printf "qly is %.1f times faster (target 10)\n", p / q }'
else
  echo "pandoc is not installed: the reference timing is skipped (scripts/bootstrap installs it)"
fi

if ! command -v python3 > /dev/null; then
  echo "python3 is not installed: the picture timing is skipped"
  exit 0
fi
# 20 different pictures (gradients and discs, like a figure), as PNG and as BMP, and a 2,000-word text
# that links them.
python3 - "$work" <<'PY'
import math, struct, sys, zlib
work = sys.argv[1]
W, H = 640, 480
def pixels(seed):
    # RGB rows: a gradient with a yellow disc on it.
    cx, cy, radius = 200 + seed * 10, 240, 80 + seed * 3
    rows = []
    for y in range(H):
        row = bytearray(W * 3)
        row[0::3] = bytes((x * 255) // W for x in range(W))
        row[1::3] = bytes([(y * 255) // H]) * W
        row[2::3] = bytes([(seed * 12) % 256]) * W
        dy = abs(y - cy)
        if dy < radius:
            half = int(math.sqrt(radius * radius - dy * dy))
            x0, x1 = max(0, cx - half), min(W, cx + half)
            row[x0 * 3:x1 * 3] = bytes((230, 190, 40)) * (x1 - x0)
        rows.append(bytes(row))
    return rows
def png(rows):
    raw = b''.join(b'\x00' + r for r in rows)
    def chunk(t, d): return struct.pack('>I', len(d)) + t + d + struct.pack('>I', zlib.crc32(t + d) & 0xffffffff)
    return (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', W, H, 8, 2, 0, 0, 0))
            + chunk(b'IDAT', zlib.compress(raw, 6)) + chunk(b'IEND', b''))
def bmp(rows):
    out = bytearray()
    for r in reversed(rows):  # bottom-up rows of BGR
        bgr = bytearray(len(r))
        bgr[0::3], bgr[1::3], bgr[2::3] = r[2::3], r[1::3], r[0::3]
        out += bgr
    return (b'BM' + struct.pack('<IHHI', 54 + len(out), 0, 0, 54)
            + struct.pack('<IiiHHIIiiII', 40, W, H, 1, 24, 0, len(out), 2835, 2835, 0, 0) + bytes(out))
for i in range(20):
    rows = pixels(i)
    open(f'{work}/pic{i}.png', 'wb').write(png(rows))
    open(f'{work}/pic{i}.bmp', 'wb').write(bmp(rows))
def rtf(ext, pictures):
    words = ' '.join(['the manuscript of a long novel written over years'] * 200)
    links = ''.join('{\\field{\\*\\fldinst{HYPERLINK "qlypicture:pic%d.%s"}}{\\fldrslt [figure]}}\\\n' % (i, ext) for i in range(pictures))
    return '{\\rtf1\\ansi\\ansicpg1252 ' + words + '\\\n' + links + words + '}'
open(f'{work}/none.rtf', 'w').write(rtf('png', 0))
open(f'{work}/png.rtf', 'w').write(rtf('png', 20))
open(f'{work}/bmp.rtf', 'w').write(rtf('bmp', 20))
PY
none_ms=$(median_ms "$runs" "$qly" convert "$work/none.rtf" -o "$work/none.html")
for kind in png bmp; do
  rm -rf "$work/$kind.html"
  with_ms=$(median_ms "$runs" sh -c "rm -rf '$work/$kind.html' && '$qly' convert '$work/$kind.rtf' -o '$work/$kind.html'")
  awk -v w="$with_ms" -v n="$none_ms" -v k="$kind" 'BEGIN { printf "20 %s pictures: %d ms against %d ms without, %.1f ms a picture (target 10)\n", k, w, n, (w - n) / 20 }'
done
