#!/usr/bin/env bash
# Compiles the help pages of a language:
#   compile_help.sh <folder of pages> <locale id> <code page> <work folder> <result.chm>
# The project, its contents and its index come from the pages: 1.htm leads, the pages it links to
# follow in its order; headings with an anchor stand below their page and in the index. A page begins
# with its heading, which becomes its title; what stands around it is added here. Pages are UTF-8,
# contents and index in the language's code page, as the system's viewer wants them.
# The same pages give the same bytes. Fails when the compiler warns or a page is in no contents.
set -euo pipefail
export LC_ALL=C
pages=$1 locale=$2 codepage=$3 work=$4 result=$5

die() {
  echo "compile_help: $*" >&2
  exit 1
}

rm -rf "$work"
mkdir -p "$work"
for page in "$pages"/*.htm; do
  title=$(sed -n '1s|^<h1>\(.*\)</h1>.*|\1|p' "$page")
  [ -n "$title" ] || die "$page does not begin with a line <h1>...</h1>"
  {
    cat <<HEAD
<!DOCTYPE html PUBLIC "-//W3C//DTD HTML 4.01 Transitional//EN">
<html>
<head>
<meta http-equiv="Content-Type" content="text/html; charset=utf-8">
<title>$title</title>
</head>
<body>
HEAD
    cat "$page"
    printf '</body>\n</html>\n'
  } >"$work/${page##*/}"
done
cd "$work"

# The pages in the order of the contents.
ordered=(1.htm)
for page in $(grep -o 'href="[^"#:]*\.htm' 1.htm | sed 's/^href="//'); do
  case " ${ordered[*]} " in *" $page "*) ;; *) ordered+=("$page") ;; esac
done
for page in *.htm; do
  case " ${ordered[*]} " in *" $page "*) ;; *) die "$pages/1.htm does not link to $page" ;; esac
done

# Lines of depth, file, title: the page's title, then its headings with an anchor.
entries() {
  for page in "${ordered[@]}"; do
    [ -f "$page" ] || die "$pages/1.htm links to $page, which does not exist"
    sed -n "s|.*<title>\(.*\)</title>.*|1\t$page\t\1|p" "$page"
    sed -n "s|.*<h[23]><a name=\"\([^\"]*\)\">\(.*\)</a></h[23]>.*|2\t$page#\1\t\2|p" "$page" |
      sed 's|</\{0,1\}tt>||g'
  done
}
entries >entries

sitemap() {
  awk -F '\t' -v nested="$1" '
    function item(title, file) {
      gsub(/"/, "\\&quot;", title)
      printf "<LI><OBJECT type=\"text/sitemap\"><param name=\"Name\" value=\"%s\">" \
             "<param name=\"Local\" value=\"%s\"></OBJECT>\n", title, file
    }
    BEGIN {
      print "<!DOCTYPE HTML PUBLIC \"-//IETF//DTD HTML//EN\">\n<HTML><HEAD></HEAD><BODY>\n<UL>"
      depth = 1
    }
    {
      for (; nested && depth < $1; ++depth) print "<UL>"
      for (; nested && depth > $1; --depth) print "</UL>"
      item($3, $2)
    }
    END {
      for (; nested && depth > 1; --depth) print "</UL>"
      print "</UL>\n</BODY></HTML>"
    }'
}
sitemap 1 <entries | iconv -f UTF-8 -t "$codepage" >Kestrun.hhc
sort -t '	' -k 3,3 -k 2,2 entries | sitemap 0 | iconv -f UTF-8 -t "$codepage" >Kestrun.hhk

# The binary index and the full-text search of this compiler hold what happened to be in memory.
{
  cat <<PROJECT
[OPTIONS]
Compatibility=1.1 or later
Compiled file=Kestrun.chm
Contents file=Kestrun.hhc
Index file=Kestrun.hhk
Default topic=1.htm
Default Window=main
Title=Kestrun
Language=$locale
Binary Index=No
Binary TOC=No
Full-text search=No

[WINDOWS]
main="Kestrun","Kestrun.hhc","Kestrun.hhk","1.htm","1.htm",,,,,0x40120,260,0x387e,[80,60,1080,760],,,,,,,0

[FILES]
PROJECT
  printf '%s\n' "${ordered[@]}"
} >Kestrun.hhp

# The compiler ends with 0 whatever it found; its warnings and errors tell.
chmcmd Kestrun.hhp >log 2>&1 || { cat log >&2; die "the compiler failed"; }
if grep -E '^(Warning|Error):' log >&2; then die "the pages of $pages have faults"; fi
[ "$(head -c 4 Kestrun.chm)" = ITSF ] || { cat log >&2; die "the compiler wrote no help file"; }

# Times stand in the file's header and in its system record: both become zero.
zero() {
  printf '\0\0\0\0' | dd of=Kestrun.chm bs=1 seek="$1" conv=notrunc status=none
}
version=$(grep -obUa 'HHA Version' Kestrun.chm || true)
[ -n "$version" ] || die "the system record of the help file was not found"
zero 16
zero $((${version%%:*} - 8))

mkdir -p "$(dirname "$result")"
mv Kestrun.chm "$result"
