# What the tests that read TIFF by python3-tifffile share: `python3`, and a scratch folder in "$1" in which they stand. They
# end with 77 without that reader.
python3=$(command -v /usr/bin/python3 || command -v python3)
"$python3" -c 'import tifffile' 2>/dev/null || { echo "no tifffile"; exit 77; }
scratch=$(mktemp -d "$1/tifffile-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
cd "$scratch"
