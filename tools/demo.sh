#!/usr/bin/env bash
# Runs the library on pictures: demo.sh BIN_DIR OUT_DIR [PHOTO]. Without a photo it uses the synthetic street.
set -eu

bin=$1/rvxcv
out=$2
photo=${3:-}
mkdir -p "$out"

show() { printf '  %-22s %s\n' "$1" "$2"; }

"$bin" info
echo
for frame in 0 1 2 3 4 5; do
    "$bin" scene "$out/street-$frame.png" --frame "$frame"
done
picture=${photo:-$out/street-0.png}

echo "Pictures in $out:"
show street-0.png "the synthetic street, first of six frames"
"$bin" diff "$out/street-0.png" "$out/street-1.png" "$out/diff.png"
show diff.png "what moved between two frames"
"$bin" average "$out"/street-[0-5].png -o "$out/average.png" --alpha 0.3
show average.png "running average of the frames"
"$bin" gradient "$picture" -o "$out/gradient.png"
show gradient.png "length of the Sobel gradient"
"$bin" gradient "$picture" -o "$out/laplacian.png" --filter laplacian --size 5
show laplacian.png "5x5 Laplacian, zero in the middle of the grey scale"
"$bin" edges "$picture" -o "$out/edges.png" >/dev/null
show edges.png "Canny edges, thresholds from the picture"
for op in open tophat gradient; do
    "$bin" morph "$op" "$picture" -o "$out/morph-$op.png" --mask ellipse:9x9
    show "morph-$op.png" "morphology: $op with an ellipse of 9x9"
done
"$bin" corners "$picture" -o "$out/corners.png"
show corners.png "the corners that can be tracked best"
