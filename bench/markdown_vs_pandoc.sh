#!/usr/bin/env bash
# Whole-process timing of "qly convert big.md -o big.rtf" on 200,000 words with emphasis every ten
# words (target: 120 ms), and of pandoc converting the same Markdown to RTF, the reference qly should
# beat tenfold. Prints the median of several runs of each; without pandoc the reference is skipped.
# Usage: bench/markdown_vs_pandoc.sh [path/to/qly] [runs]
set -euo pipefail
qly=${1:-build/tools/qly/qly}
runs=${2:-7}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export QT_QPA_PLATFORM=offscreen

# 200,000 words in paragraphs of 80; every tenth word bold, italic or bold italic in turn.
awk 'BEGIN {
  split("the manuscript of a long novel written over years chapter and scene quiet harbour", w, " ");
  srand(7);
  for (i = 1; i <= 200000; i++) {
    word = w[int(rand() * 14) + 1];
    if (i % 10 == 0) { m = (i / 10) % 3; mk = (m == 0) ? "*" : (m == 1) ? "**" : "***"; word = mk word mk }
    printf "%s%s", word, (i % 80 == 0) ? "\n\n" : " ";
  }
}' > "$work/big.md"

# Median wall time in milliseconds of running the command $runs times.
median_ms() {
  local times=()
  for _ in $(seq "$runs"); do
    local start end
    start=$(date +%s%N)
    "$@" > /dev/null
    end=$(date +%s%N)
    times+=($(( (end - start) / 1000000 )))
  done
  printf '%s\n' "${times[@]}" | sort -n | awk '{ a[NR] = $1 } END { print a[int((NR + 1) / 2)] }'
}

echo "input: $(wc -w < "$work/big.md") words, $(wc -c < "$work/big.md") bytes; median of $runs runs"
qly_ms=$(median_ms "$qly" convert "$work/big.md" -o "$work/big.rtf")
echo "qly convert big.md -o big.rtf: ${qly_ms} ms (target 120 ms)"
if command -v pandoc > /dev/null; then
  pandoc_ms=$(median_ms pandoc -f markdown -t rtf -s "$work/big.md" -o "$work/big-pandoc.rtf")
  echo "pandoc -f markdown -t rtf: ${pandoc_ms} ms"
  awk -v q="$qly_ms" -v p="$pandoc_ms" 'BEGIN { if (q > 0) printf "qly is %.1f times faster (target 10)\n", p / q }'
else
  echo "pandoc is not installed: the reference timing is skipped (scripts/bootstrap installs it)"
fi
