#!/usr/bin/env bash
# Imports one GeoPackage of points with five attributes twice, into fresh files: with
# `annotationlayer import` (into a database made by `annotationlayer create`) and with
# `ogr2ogr -f SQLite -dsco SPATIALITE=YES`. Prints both wall-clock times, their ratio, the peak
# memory of each (GNU time) and how the import's time splits between reading through OGR,
# converting, and writing through the module's batch importer. Then, on the imported database:
# `tree --features` (lines per second, peak memory) and `render` of every point (features per
# second from the report to the last entity).
#
#   bench/import_vs_ogr2ogr.sh [--features N | --large] [--tool PATH] [--keep DIR]
#
# --features N  size of the generated source (default 200000); --large is 1000000
# --tool PATH   the annotationlayer executable (default build/tools/annotationlayer)
# --keep DIR    work in DIR and keep the files there (default: a temporary directory, removed)
set -euo pipefail

features=200000
tool=build/tools/annotationlayer
keep=""
while [ $# -gt 0 ]; do
  case "$1" in
    --features) features=$2; shift 2 ;;
    --large) features=1000000; shift ;;
    --tool) tool=$2; shift 2 ;;
    --keep) keep=$2; shift 2 ;;
    -h|--help) sed -n '2,13p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
    *) echo "import_vs_ogr2ogr.sh: unknown argument $1" >&2; exit 2 ;;
  esac
done
case "$features" in ''|*[!0-9]*) echo "import_vs_ogr2ogr.sh: --features wants a number" >&2; exit 2 ;; esac

for program in ogr2ogr /usr/bin/time awk; do
  command -v "$program" > /dev/null || { echo "import_vs_ogr2ogr.sh: $program is missing (scripts/install-deps.sh installs it)" >&2; exit 1; }
done
[ -x "$tool" ] || { echo "import_vs_ogr2ogr.sh: $tool is not built (make build)" >&2; exit 1; }
tool=$(cd "$(dirname "$tool")" && pwd)/$(basename "$tool")

if [ -n "$keep" ]; then
  mkdir -p "$keep"
  work=$(cd "$keep" && pwd)
else
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
fi
cd "$work"
rm -f points.csv points.gpkg annotations.db ogr2ogr.sqlite

echo "generating $features points with five attributes ..."
awk -v n="$features" 'BEGIN {
  srand(42);
  print "lon,lat,name,category,population,elevation,code";
  for (i = 0; i < n; i++) {
    printf "%.7f,%.7f,place %d,%s,%d,%.2f,%d\n", 73 + rand() * 62, 18 + rand() * 35, i,
           (i % 3 == 0 ? "town" : (i % 3 == 1 ? "village" : "city")), int(rand() * 1000000),
           rand() * 5000, 10000000000 + i;
  }
}' > points.csv
ogr2ogr -f GPKG points.gpkg points.csv -nln points -a_srs EPSG:4326 \
  -oo X_POSSIBLE_NAMES=lon -oo Y_POSSIBLE_NAMES=lat -oo KEEP_GEOM_COLUMNS=NO \
  -oo AUTODETECT_TYPE=YES
rm -f points.csv

# Seconds of "Elapsed (wall clock) time (h:mm:ss or m:ss): 1:02.34" in a GNU time report.
elapsed() {
  awk -F': ' '/Elapsed \(wall clock\)/ { n = split($2, p, ":"); s = 0;
    for (i = 1; i <= n; i++) s = s * 60 + p[i]; printf "%.2f", s }' "$1"
}
peak_mib() {
  awk -F': ' '/Maximum resident set size/ { printf "%.1f", $2 / 1024 }' "$1"
}
json_number() {
  sed -n "s/.*\"$1\" : \([0-9.eE+-]*\).*/\1/p" "$2" | head -n 1
}

"$tool" create annotations.db > /dev/null
echo "importing with annotationlayer ..."
/usr/bin/time -v "$tool" import annotations.db points.gpkg --json > import.json 2> import.time
echo "importing with ogr2ogr ..."
/usr/bin/time -v ogr2ogr -f SQLite -dsco SPATIALITE=YES ogr2ogr.sqlite points.gpkg 2> ogr2ogr.time

imported=$(json_number features import.json)
[ "$imported" = "$features" ] || { echo "import_vs_ogr2ogr.sh: imported $imported of $features features" >&2; exit 1; }
tool_s=$(elapsed import.time); ogr_s=$(elapsed ogr2ogr.time)
read_s=$(json_number read_seconds import.json)
convert_s=$(json_number convert_seconds import.json)
write_s=$(json_number write_seconds import.json)

echo
echo "source: $features points, 5 attributes (GeoPackage, $(du -h points.gpkg | cut -f1))"
printf '%-44s %10s %18s\n' "" "time (s)" "peak memory (MiB)"
printf '%-44s %10s %18s\n' "annotationlayer import" "$tool_s" "$(peak_mib import.time)"
printf '%-44s %10s %18s\n' "ogr2ogr -f SQLite -dsco SPATIALITE=YES" "$ogr_s" "$(peak_mib ogr2ogr.time)"
awk -v a="$tool_s" -v b="$ogr_s" 'BEGIN { if (b > 0) printf "ratio (import / ogr2ogr): %.2f\n", a / b }'
awk -v r="$read_s" -v c="$convert_s" -v w="$write_s" 'BEGIN { t = r + c + w; if (t <= 0) t = 1;
  printf "import split: reading through OGR %.2f s (%.0f%%), converting %.2f s (%.0f%%), writing through the batch importer %.2f s (%.0f%%)\n",
         r, 100 * r / t, c, 100 * c / t, w, 100 * w / t }'

echo "listing with tree --features ..."
/usr/bin/time -v "$tool" tree annotations.db --features > tree.txt 2> tree.time
tree_lines=$(wc -l < tree.txt)
tree_s=$(elapsed tree.time)
awk -v n="$tree_lines" -v s="$tree_s" -v m="$(peak_mib tree.time)" 'BEGIN { if (s <= 0) s = 0.01;
  printf "tree --features: %d lines in %.2f s, %.0f lines/s, peak memory %.1f MiB\n", n, s, n / s, m }'
rm -f tree.txt

echo "rendering every point ..."
/usr/bin/time -v "$tool" render annotations.db --extent 72,17,136,54 --size 1024x768 \
  --max-features 1000000 --timeout 1800 --json -o render.png > render.json 2> render.time
drawn=$(json_number features render.json)
render_s=$(json_number seconds render.json)
awk -v n="$drawn" -v s="$render_s" -v m="$(peak_mib render.time)" 'BEGIN { if (s <= 0) s = 0.01;
  printf "render: %d features in %.2f s, %.0f features/s, peak memory %.1f MiB\n", n, s, n / s, m }'
