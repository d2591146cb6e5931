#!/usr/bin/env bash
# Opens the page of zxpolicy report in a browser without a window: it shows the rules, their traffic and the findings,
# and the road of a mail is the one that zxpolicy explain tells. Names that are pieces of a page, or turn the direction of
# a line, are texts there like others.
#   check_report_page.sh PROGRAM EXAMPLES
set -euo pipefail

(($# == 2)) || { echo "usage: check_report_page.sh PROGRAM EXAMPLES" >&2 && exit 2; }
program=$(realpath "$1")
examples=$(realpath "$2")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
export ZXPOLICY_STORE=sqlite:policy.db HOME=$work
unset COLUMNS
wrong=0

complain() {
    echo "check_report_page: $*" >&2
    wrong=1
}

# The page as it stands after its script has run, for what stands behind "#" in its address.
shown() {
    timeout 120 chromium --headless --no-sandbox --disable-gpu --disable-dev-shm-usage --no-first-run --disable-sync \
        --disable-background-networking --disable-component-update --user-data-dir="$work/profile" \
        --virtual-time-budget=5000 --dump-dom "file://$work/page.html#$1" 2>browser.log || {
        cat browser.log >&2
        return 1
    }
}

"$program" apply "$examples/policy.yaml" >/dev/null 2>&1
printf '%s\n' $'eve@example.net\tsales@netnoteinc.com' $'<>\tnobody@elsewhere.example' 'bad line' >traffic.tsv
cat "$examples/envelopes.tsv" >>traffic.tsv
status=0
"$program" report --envelopes traffic.tsv --html page.html >report.txt || status=$?
((status == 1)) || complain "a bad line is not the answer no, but status $status"
grep -q 'page.html' report.txt || complain "it does not say what it wrote"

grep -qE '(https?:)?//[a-z]' page.html && grep -oE '(https?:)?//[a-z][^" ]*' page.html | grep -vx '//' | grep -q . &&
    complain "the page names something on a network"

shown "sender=eve@example.net&receiver=sales@netnoteinc.com" >dom.html
text() { python3 -c '
import html, re, sys
page = open("dom.html", encoding="utf-8").read()
found = re.search(sys.argv[1], page, re.S)
sys.stdout.write(html.unescape(re.sub(r"<[^>]*>", "", found.group(1))) if found else "NOT FOUND")' "$1"; }

"$program" explain --sender eve@example.net --receiver sales@netnoteinc.com >road.txt
text '<pre id="road">(.*?)</pre>' >shown.txt
diff road.txt shown.txt >&2 || complain "the road is not the one that explain tells"

"$program" tree --json | python3 -c '
import json, sys
def tell(rule):
    print(rule["path"])
    for below in rule["rules"]: tell(below)
tell(json.load(sys.stdin)["tree"])' >rules.txt
[[ -s rules.txt ]] || complain "there are no rules"
while IFS= read -r rule; do
    python3 - "$rule" <<'END' || complain "rule $rule is not shown"
import html, sys
page = open("dom.html", encoding="utf-8").read()
sys.exit(f"<code>{html.escape(sys.argv[1], quote=False)}</code>" not in page)
END
done <rules.txt
text '<p id="summary">(.*?)</p>' >summary.txt
grep -q ' without a rule; 1 error, ' summary.txt || complain "the summary says: $(cat summary.txt)"
grep -q '1 line of the traffic could not be read' summary.txt || complain "the bad line is not told: $(cat summary.txt)"
grep -q '<li class="error"><b>error directory-list: ' dom.html || complain "lint's error is not in its place"
text '<p id="sampled">(.*?)</p>' | grep -q 'worked out beforehand' || complain "it does not say that the roads are a sample"

shown "sender=eve@example.net&receiver=unknown@nowhere.example" >dom.html
text '<p id="said"[^>]*>(.*?)</p>' | grep -q 'not among those' || complain "a mail that was not explained is not refused"

# A command that the page proposes is one that a shell takes as it stands.
shown "sender=o'b@x.example&receiver=-r@y.example" >dom.html
asked=$(text '<p id="said"[^>]*>(.*?)</p>' | sed 's/.*Ask: zxpolicy //')
eval "\"$program\" $asked" >road.txt || complain "no shell takes the command $asked"
grep -qxF "mail from o'b@x.example" road.txt && grep -qxF 'receiver -r@y.example' road.txt ||
    complain "the command asks for another mail: $asked"

cat >hostile.yaml <<'END'
zxpolicy: 1
root:
  conditions: [{sender: "*", receiver: "*@z.example"}]
  rules:
    - name: "</script><script>document.title='taken'</script>"
      conditions: [{sender: "*", receiver: "*@z.example"}]
    - name: "<!-- <img src=x onerror=document.title='taken'> %DATA%"
      conditions: [{sender: "*", receiver: "b@z.example"}]
    - name: "\u202Eback\u2028\e"
      conditions: [{sender: "*", receiver: "c@z.example"}]
    - name: Outside
      conditions: [{sender: "*", receiver: "d@y.example"}]
END
"$program" --store sqlite:hostile.db apply hostile.yaml >/dev/null 2>&1
"$program" --store sqlite:hostile.db report --envelopes /dev/null --html page.html >/dev/null
shown "" >dom.html
text '<title>(.*?)</title>' | grep -qx 'Mail policy report' || complain "a name has run as a script"
text '<div id="rules">(.*)<div id="rest"' | grep -q 'for example from "[^"]*" to "d@y.example". To do' ||
    complain "the mail that shows a finding is not told"
(($(grep -o '<img' dom.html | wc -l) == 0)) || complain "a name has become a picture"
for shown in "\\</script><script>document.title='taken'</script>" '\xE2\x80\xAEback\xE2\x80\xA8\x1B'; do
    text '<div id="rules">(.*)<div id="rest"' | grep -qF -- "$shown" || complain "it does not show the name $shown"
done
text '<p id="summary">(.*?)</p>' | grep -q ' 0 mails to 0 receivers' || complain "no traffic is not told as such"
grep -q 'NaN' dom.html && complain "no traffic has shares"

exit $wrong
