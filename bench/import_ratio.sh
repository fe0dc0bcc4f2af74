#!/usr/bin/env bash
# How the word-processor import grows with the document: runs BM_ExtendedRTFImport on the 200k-word
# document (×1) and on four times it (×4) in separate processes, alternating, and prints the median
# time of each and the ratio of the medians (target: at most 4.4). One process per run keeps one
# size's heap from warming the other's; alternating spreads the machine's slow spells over both.
# Usage: bench/import_ratio.sh [path/to/bench_import] [rounds]
set -euo pipefail
bench=${1:-build-bench/bench/bench_import}
rounds=${2:-10}
export QT_QPA_PLATFORM=offscreen

median_ms() {
  "$bench" --benchmark_filter="BM_ExtendedRTFImport/$1/" 2>/dev/null | grep -o 'median_ms=[0-9.]*' | cut -d= -f2
}

results=$(for _ in $(seq "$rounds"); do
  echo "1 $(median_ms 1)"
  echo "4 $(median_ms 4)"
done)

echo "$results" | awk '
  { t[$1, ++n[$1]] = $2 }
  function median(size,    i, j, k, v, m) {
    m = n[size]
    for (i = 1; i <= m; i++) v[i] = t[size, i]
    for (i = 2; i <= m; i++) { k = v[i]; for (j = i - 1; j >= 1 && v[j] > k; j--) v[j + 1] = v[j]; v[j + 1] = k }
    return m % 2 ? v[(m + 1) / 2] : (v[m / 2] + v[m / 2 + 1]) / 2
  }
  END {
    one = median(1); four = median(4)
    printf "x1 median %.1f ms, x4 median %.1f ms, ratio %.2f (%d runs each)\n", one, four, four / one, n[1]
    printf "ratios of the pairs:"
    for (i = 1; i <= n[1]; i++) printf " %.2f", t[4, i] / t[1, i]
    printf "\n"
  }'
