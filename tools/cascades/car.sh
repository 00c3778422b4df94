#!/usr/bin/env bash
# Makes the cascade that comes with the program from rendered streets: car.sh BIN_DIR OUT.json. Takes two minutes of one core.
# The tests search streets from 1001 on, the demo street 2001: none of them is trained on.
set -euo pipefail

bin=$(cd "$1" && pwd)/rvxcv
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/cars" "$work/others"
for street in $(seq 1 240); do
    "$bin" scene "$work/cars/$street.png" --street "$street" --seed "$street" --boxes "$work/cars/$street.csv"
done
for street in $(seq 241 300); do
    "$bin" scene "$work/others/$street.png" --street "$street" --seed "$street" --cars 0
done
"$bin" train "$work/cars" "$work/others" --object car --window 32x16 --hit-rate 0.9995 --copies 6 -o "$2"
