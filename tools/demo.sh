#!/usr/bin/env bash
# Runs the library on pictures: demo.sh BIN_DIR OUT_DIR [PHOTO]. Without a photo it uses the synthetic street; what
# needs a film always does.
set -eu

bin=$1/rvxcv
out=$2
photo=${3:-}
mkdir -p "$out"

# Name and meaning of a picture, and what the command had to say.
show() {
    printf '  %-22s %s\n' "$1" "$2"
    if [[ -n ${3:-} ]]; then
        printf '  %-22s %s\n' '' "$3"
    fi
}

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
said=$("$bin" history "$out"/street-[0-5].png -o "$out/history.png" --threshold 20 --duration 5)
show history.png "where something moved, and how long ago: bright is new" "$said"
said=$("$bin" track "$out"/street-[0-5].png -o "$out/track.png" --csv "$out/tracks.csv" \
    --count 800 --quality 0.001 --distance 8)
show track.png "corners followed through the frames; as a list: tracks.csv" "$said"

# The camera has watched the street without cars for a while: the same six frames, sixteen times.
film=()
for frame in 0 1 2 3 4 5; do
    "$bin" scene "$out/empty-$frame.png" --frame "$frame" --cars 0
done
for _ in {1..16}; do
    film+=("$out"/empty-[0-5].png)
done
said=$("$bin" foreground "${film[@]}" "$out"/street-[0-5].png -o "$out/foreground" --teach 96 --clean)
show foreground/ "what moves in the six frames, as silhouettes, and background.png" "$said"

"$bin" scene "$out/street-2001.png" --street 2001
said=$("$bin" detect car "$out/street-2001.png" -o "$out/detect.png" --csv "$out/cars.csv")
show detect.png "cars in a street that was not trained on; as a list: cars.csv" "$said"

"$bin" gradient "$picture" -o "$out/gradient.png"
show gradient.png "length of the Sobel gradient"
"$bin" gradient "$picture" -o "$out/laplacian.png" --filter laplacian --size 5
show laplacian.png "5x5 Laplacian, zero in the middle of the grey scale"
said=$("$bin" orientation "$picture" -o "$out/orientation.png" --legend)
show orientation.png "the direction of the strongest change as hue, coherence as saturation" "$said"
"$bin" blur "$picture" -o "$out/blur.png" --sigma 4
show blur.png "Gaussian blur, sigma 4"
said=$("$bin" deviation "$picture" -o "$out/deviation.png" --window 9x9)
show deviation.png "local contrast: deviation in windows of 9x9" "$said"
said=$("$bin" pyramid "$picture" -o "$out/pyramid.png" --rate 1.5 --levels 6)
show pyramid.png "the picture and six smaller levels, each 1.5 times smaller" "$said"
size=${said#*: }
size=${size%% *} # of the picture, WxH
width=${size%x*} height=${size#*x}
"$bin" profile "$picture" --from "0,$((height / 2))" --to "$((width - 1)),$((height / 2))" -o "$out/profile.svg"
show profile.svg "the pixels of the middle row, as a plot"

"$bin" edges "$picture" -o "$out/edges.png" >/dev/null
show edges.png "Canny edges, thresholds from the picture"
said=$("$bin" lines "$picture" -o "$out/lines.png")
show lines.png "straight lines through the edges" "$said"
said=$("$bin" lines "$picture" -o "$out/segments.png" --segments --csv "$out/segments.csv")
show segments.png "where those lines are; as a list: segments.csv" "$said"
said=$("$bin" distance "$picture" -o "$out/distance.png")
show distance.png "distance to the nearest edge" "$said"
said=$("$bin" fill "$picture" -o "$out/fill.png" --seed "$((width * 3 / 5)),$((height / 12))" --range 40,40)
show fill.png "a region filled from a seed near the upper edge" "$said"
said=$("$bin" label "$picture" -o "$out/label.png" --csv "$out/parts.csv" --min-area 20)
show label.png "bright parts in a colour each; as a list: parts.csv" "$said"
# Scratches, from the left edge down to the right. In this format 1 is black.
awk -v w="$width" -v h="$height" 'BEGIN {
    print "P1\n" w, h
    while (length(good) < w) good = good "1111111111"
    step = int(w / 6) + 5
    for (y = 0; y < h; ++y) {
        row = ""
        for (at = int(y / 3) % step; at + 4 <= w; at += step) row = row substr(good, 1, at - length(row)) "0000"
        print row substr(good, 1, w - length(row))
    }
}' >"$out/scratches.pbm"
said=$("$bin" inpaint "$picture" --mask "$out/scratches.pbm" -o "$out/inpaint.png" --show "$out/scratched.png")
show scratched.png "the picture with scratches, in magenta"
show inpaint.png "the scratches filled from what is around them" "$said"
said=$("$bin" segment "$picture" -o "$out/segment.png")
show segment.png "regions by themselves: the watershed of the gradient" "$said"
said=$("$bin" segment "$picture" -o "$out/means.png" --method gradient --show means)
show means.png "regions by the picture's own steps, in their mean colours" "$said"
for op in open tophat gradient; do
    "$bin" morph "$op" "$picture" -o "$out/morph-$op.png" --mask ellipse:9x9
    show "morph-$op.png" "morphology: $op with an ellipse of 9x9"
done
"$bin" corners "$picture" -o "$out/corners-harris.png" --method harris
show corners-harris.png "corners by the Harris measure"
"$bin" morph fill-holes "$picture" -o "$out/morph-fill-holes.png"
show morph-fill-holes.png "dark places filled up to the rim of what encloses them"
"$bin" morph clear-border "$picture" -o "$out/morph-clear-border.png"
show morph-clear-border.png "what is bright and touches the frame taken away"
"$bin" morph domes "$picture" -o "$out/morph-domes.png" --height 40
show morph-domes.png "what rises at most 40 levels above its surroundings"
"$bin" morph rolling-ball "$picture" -o "$out/morph-ball.png" --radius 40
show morph-ball.png "the background taken away by a rolling ball of radius 40: what is small and bright"
"$bin" corners "$picture" -o "$out/corners.png"
show corners.png "the corners that can be tracked best"
"$bin" corners "$picture" -o "$out/corners-fast.png" --method fast --count 300 --distance 8
show corners-fast.png "FAST corners: where a run of points around a pixel is brighter or darker"

# A wide-angle lens, in pixels of the pictures that it bends.
lens=(--focal "450,450" --k "-0.28,0.06")
"$bin" undistort --grid 640x480 "${lens[@]}" --bend -o "$out/grid-bent.png" >/dev/null
show grid-bent.png "a grid of straight lines as a wide-angle lens shows it"
said=$("$bin" undistort "$out/grid-bent.png" "${lens[@]}" -o "$out/grid.png")
show grid.png "the same without the distortion: straight again" "$said"

echo
echo "The first frame of the street in numbers, and what the second one changes:"
"$bin" stats "$out/street-0.png" | sed 's/^/  /'
"$bin" compare "$out/street-1.png" "$out/street-0.png" | sed 's/^/  /'
