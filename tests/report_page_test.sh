#!/usr/bin/env bash
# Report pages in a browser. Arguments: the tool, the project's folder, a scratch folder. Ends with 77 where there
# is no browser or no playwright-core to drive it.
set -euo pipefail
. "$(dirname "$0")/support/tool.sh"
tool=$1 project=$2
browser=$(command -v chromium || true)
[ -n "$browser" ] && command -v node >/dev/null || { echo "no browser"; exit 77; }
scratch=$(mktemp -d "$3/report-XXXXXX")
trap 'rm -rf "$scratch"' EXIT
driver=$3/browser
mkdir -p "$driver"
[ -d "$driver/node_modules/playwright-core" ] ||
  (cd "$driver" && npm install --silent --no-save --no-fund --no-audit --prefix . playwright-core@1.49 >/dev/null 2>&1) ||
  { echo "no playwright-core"; exit 77; }
cp "$project/tests/report_page_test.mjs" "$driver"
cd "$scratch"

# What fontconfig loaded it keeps until the process ends.
echo leak:libfontconfig >suppressions
export LSAN_OPTIONS=suppressions=$scratch/suppressions:print_suppressions=0

browse() { timeout 120 "$browser" --headless --no-sandbox --disable-gpu --disable-dev-shm-usage "$@"; }

# A drawing and a picture, with markup wherever a person can put some.
"$(dirname "$tool")/make_demo" .
evil="<script>document.title='owned'</script><img src=x onerror=console.log(1)>"
printf '%s\r\n' "$evil" >words.txt
expect 0 '' "$tool" new -o plain.ntf --station S --image demo-terrain.png --lossless --image demo-chart.png --at 36,420 \
  --quality 2 --graphic demo-symbols.cgm --at 150,60 --text words.txt
expect 0 '' "$tool" set plain.ntf -o evil.ntf --force "FTITLE=$evil" "ONAME=${evil:0:20}" image:0 "IID1=${evil:0:9}" \
  "IID2=$evil" ISYNC=1 ICORDS=D "IGEOLO=+51.000+010.000+51.000+011.000+50.000+011.000+50.000+010.000" text:0 "TXTITL=$evil"
# The module refuses what the standard shows.
printf 'NSIF01.00' | dd of=evil.ntf conv=notrunc status=none
expect 0 '' "$tool" report --module evil.ntf -o page.html
expect 0 '' "$tool" report evil.ntf plain.ntf -o both.html
[ "$(stat -c %s page.html)" -lt 1500000 ] || fail "the page has $(stat -c %s page.html) bytes"
browse --dump-dom "file://$scratch/page.html" >dom.html 2>/dev/null
for section in summary check picture segments location texts fields layout; do
  grep -q "id=\"f1-$section\"" dom.html || fail "no section $section"
done
grep -q '<title>evil.ntf</title>' dom.html || fail "the title changed"
browse --window-size=1280,900 --screenshot=page.png "file://$scratch/page.html" >/dev/null 2>&1
[ -s page.png ] || fail "no screenshot"
timeout 300 node "$driver/report_page_test.mjs" "$browser" "$scratch/page.html" "$scratch/both.html"
