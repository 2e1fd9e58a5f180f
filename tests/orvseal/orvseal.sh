#!/usr/bin/env bash
# Tests the sample client on real directories.
# usage: orvseal.sh PROGRAM [CHECK...]
# shellcheck disable=SC2154,SC2317 # the program is set in the file below; the checks are found by their names
# shellcheck source=/dev/null
. "$(dirname "$0")/checks.sh"

check_round_trip() {
    mkdir -p 'source/with spaces/deeper' source/empty "source/new
line"
    echo dash >source/-dash
    echo star >'source/*'
    echo quote >"source/\"quote' \\back"
    echo uni >source/größe-日本
    echo tail >'source/with spaces/deeper/ trailing '
    : >source/nothing
    echo inside >"source/new
line/file"
    ln -s 'with spaces' source/link
    ln -s /nowhere/at/all source/dangling
    ln -s .. source/empty/parent
    # A byte-order mark, which Qt drops at the beginning of a string
    echo mark >"source/$(printf '\357\273\277')marked"
    ln -s "$(printf '\357\273\277')marked" source/marked-link
    mkdir source/folder.with.a.name.that.ends.late && : >"source/$(printf '%0250d' 0)"
    expect_status 0 seal source vault
    expect_line out 'sealed 9 files'
    expect_status 0 verify vault
    expect_line out 'verified 9 files'
    expect_status 0 open vault target
    expect_same_trees source target
    [ "$(readlink target/dangling)" = /nowhere/at/all ] || fail "a dangling link has another target"
    [ "$(attributes source)" = "$(attributes target)" ] || fail "permissions or times differ"
    [ -z "$(find target -name '.orvseal*')" ] || fail "a temporary file is left: $(ls -A target)"
}

check_sizes_around_blocks_and_chunks() {
    mkdir source
    local size
    for size in 1 7 8 9 15 16 17 31 32 33 262143 262144 262145 262160 524287 524288 524289 1000000; do
        head -c "$size" /dev/urandom >"source/$size"
    done
    expect_status 0 seal --jobs 3 source vault
    expect_status 0 verify --jobs 3 vault
    expect_status 0 open --jobs 3 vault target
    expect_same_trees source target
}

check_every_algorithm() {
    mkdir source
    head -c 300000 /dev/urandom >source/file
    local row name stored length
    for row in 'des "DES" 8' 'des112 "TripleDES" 16' 'des3 "TripleDES" 24' 'aes128 "AES" 16' 'aes192 "AES" 24' \
        'aes256 "AES" 32'; do
        read -r name stored length <<<"$row"
        expect_status 0 seal --algorithm "$name" source "vault.$name"
        expect_line "vault.$name/vault.json" "\"algorithm\": $stored"
        expect_line "vault.$name/vault.json" "\"keyLength\": $length"
        expect_status 0 open "vault.$name" "target.$name"
        expect_same_trees source "target.$name"
    done
    expect_status 0 seal source vault.default
    expect_line vault.default/vault.json '"keyLength": 32'
}

check_content_is_sealed() {
    mkdir source
    printf 'a very secret text %.0s' 1 2 3 4 5 6 7 8 >source/telling-name
    expect_status 0 seal source vault
    ! grep -rq 'secret text' vault || fail "the plain text is in the vault"
    ! grep -rq 'telling-name' vault || fail "a file's name is in the vault"
    [ -z "$(find vault -name '*telling*')" ] || fail "a file's name is a name in the vault"
    expect_status 0 seal source again
    ! cmp -s vault/data/* again/data/* || fail "sealing twice gives the same bytes"
}

check_any_locale() {
    mkdir source
    echo text >source/größe
    local locale
    for locale in C C.UTF-8; do
        LC_ALL=$locale expect_status 0 seal source väult
        LC_ALL=$locale expect_status 0 open väult tärget
        expect_same_trees source tärget
        LC_ALL=$locale expect_status 0 list väult
        expect_line out größe
        rm -r väult tärget
    done
}

check_modification_times_in_any_zone() {
    mkdir source
    # Both times of the ambiguous hour in Berlin in October 2023 and in Moscow in October 2014, where it was not the end
    # of daylight-saving time; and before 1970
    TZ=UTC0 touch -t 202310290015.30 source/first
    TZ=UTC0 touch -t 202310290115.30 source/second
    TZ=UTC0 touch -t 201410252130.30 source/third
    TZ=UTC0 touch -t 201410252230.30 source/fourth
    TZ=UTC0 touch -t 196912312359.58 source/before
    local zone
    for zone in Europe/Berlin Europe/Moscow; do
        TZ=$zone expect_status 0 seal source vault
        TZ=$zone expect_status 0 open vault target
        [ "$(attributes source)" = "$(attributes target)" ] ||
            fail "in $zone: $(attributes source; attributes target)"
        rm -r vault target
    done
}

check_permissions_and_times() {
    mkdir -p source/closed/inner source/shared
    chmod 1777 source/shared
    echo text >source/closed/inner/file
    chmod 400 source/closed/inner/file
    echo text >source/closed/run
    chmod 751 source/closed/run
    touch -t 200102030405.06 source/closed/inner/file source/closed/inner
    touch -t 199912312359.58 source/closed
    chmod 555 source/closed/inner source/closed
    expect_status 0 seal source vault
    expect_status 0 open vault target
    [ "$(attributes source)" = "$(attributes target)" ] ||
        fail "permissions or times differ: $(attributes source; attributes target)"
}

check_list() {
    mkdir -p source/folder
    printf 12345 >source/folder/file
    chmod 640 source/folder/file
    chmod 750 source/folder
    TZ=UTC0 touch -t 200102030405.06 source/folder/file source/folder
    mkdir source/shared source/half-shared
    chmod 1777 source/shared
    chmod 1750 source/half-shared
    echo text >source/lends-rights
    chmod 6755 source/lends-rights
    ln -s 'some where' source/link
    TZ=UTC0 touch -h -t 200102030405.06 source/link
    printf x >"source/$(printf 'a\033[2Jb\nc')"
    TZ=Asia/Tokyo expect_status 0 seal source vault
    TZ=America/New_York expect_status 0 list vault
    expect_line out '-rw-r-----     5.00 B 2001-02-03 04:05:06  folder/file'
    expect_line out 'drwxr-x---            2001-02-03 04:05:06  folder'
    grep -q '^drwxrwxrwt .* shared$' out || fail "no sticky bit: $(cat out)"
    grep -q '^drwxr-x--T .* half-shared$' out || fail "no sticky bit: $(cat out)"
    grep -q '^-rwxr-xr-x .* lends-rights$' out || fail "not the nine bits: $(cat out)"
    expect_line out '2001-02-03 04:05:06  link -> some where'
    expect_line out 'a\x1b[2Jb\nc'
    [ "$(wc -l <out)" -eq 7 ] || fail "not a line an entry: $(cat out)"
}

check_wrong_password() {
    small_vault
    export ORVSEAL_PASSWORD=wrong
    expect_refusal verify vault
    expect_line err 'wrong password'
    expect_refusal list vault
    expect_refusal open vault target
    expect_absent target
}

check_password_file() {
    mkdir source
    printf 'from file\n' >password
    expect_status 0 seal --password-file password source vault
    expect_refusal list vault # a password file has precedence over the environment
    ORVSEAL_PASSWORD='from file' expect_status 0 list vault # without the newline
    printf 'from file\n\n' >password
    expect_refusal list --password-file password vault # only the last newline is removed
    printf '\n' >password
    expect_refusal seal --password-file password source other
    expect_line err 'empty'
    expect_refusal seal --password-file missing source other
    expect_absent other
}

check_no_password() {
    mkdir source
    unset ORVSEAL_PASSWORD
    expect_refusal seal source vault
    expect_line err 'no password'
    expect_absent vault
    ORVSEAL_PASSWORD='' expect_refusal seal source vault
    expect_line err 'empty'
}

check_damaged_file() {
    mkdir source
    local name a b c d e f
    for name in a b c d e f g; do head -c 300000 /dev/urandom >"source/$name"; done
    expect_status 0 seal source vault
    for name in a b c d e f; do printf -v "$name" %s "$(sealed_of vault "$name")"; done
    [ -f "$f" ] || { echo "    skipped: no names of sealed files"; return 0; }
    change_byte "$a" 1000   # in the middle
    change_byte "$b" 299999 # in the block before the last, so that the padding is wrong
    change_byte "$b" 299995
    printf x >>"$c"         # longer
    rm "$d"                 # gone
    rm "$e"                 # a pipe would block the reader
    mkfifo "$e"
    mv "$f" elsewhere       # a link leads out of the vault
    ln -s "$PWD/elsewhere" "$f"
    echo surplus >vault/data/other
    echo surplus >vault/another
    echo left >vault/data/0123456789abcdef0123456789abcdef # has the name of a sealed file
    expect_status 1 verify vault
    expect_line err "orvseal: a: damaged: its sealed file ${a##*/} is not what was written"
    expect_line err "orvseal: b: damaged: its sealed file ${b##*/} is not what was written"
    expect_line err "orvseal: c: damaged: its sealed file ${c##*/} has a wrong size"
    expect_line err "orvseal: d: damaged: its sealed file ${d##*/} is missing"
    expect_line err "orvseal: e: its sealed file ${e##*/}: not a regular file"
    expect_line err "orvseal: f: its sealed file ${f##*/}: not a regular file"
    expect_line err 'orvseal: data/other: surplus'
    expect_line err 'orvseal: another: surplus'
    expect_line out '1 sealed file is left over'
    expect_line out '; 8 problems'
    [ "$(wc -l <err)" -eq 8 ] || fail "not eight lines: $(cat err)"
    expect_status 1 open vault target
    [ "$(ls -A target)" = g ] || fail "in the target are: $(ls -A target)"
    cmp source/g target/g || fail "the whole file differs"
}

check_exchanged_files() {
    small_vault
    local names=(vault/data/*)
    mv "${names[0]}" kept
    mv "${names[1]}" "${names[0]}"
    mv kept "${names[1]}"
    expect_status 1 verify vault
    [ "$(wc -l <err)" -eq 2 ] || fail "not both are named: $(cat err)"
}

check_incomplete_vault() {
    small_vault
    cp vault/manifest whole
    local size offset
    size=$(wc -c <whole)
    for offset in 0 16 $((size / 2)) $((size - 20)) $((size - 1)); do
        cp whole vault/manifest
        change_byte vault/manifest "$offset"
        expect_refusal verify vault
        expect_line err 'damaged manifest'
    done
    : >vault/manifest
    expect_refusal verify vault
    rm vault/manifest
    mkfifo vault/manifest # would block the reader
    expect_refusal verify vault
    rm vault/manifest
    ln -s missing vault/manifest # does not make the vault one that was never finished
    expect_refusal seal source vault
    [ "$(file_count vault/data)" -eq 2 ] || fail "sealed files are gone: $(ls vault/data)"
    rm vault/manifest
    expect_refusal verify vault
    expect_line err 'no manifest, because sealing was not finished'
    expect_refusal open vault target
    expect_refusal list vault
    expect_absent target
    expect_status 0 seal source vault # which finishes it
    expect_line out 'vault is incomplete, without a manifest; everything is sealed anew'
    expect_status 0 seal source vault
    ! grep -q incomplete out || fail "a complete vault is called incomplete"
    expect_status 0 verify vault
    [ "$(file_count vault/data)" -eq 2 ] || fail "something is left: $(ls vault/data)"
    mv vault/data elsewhere
    ln -s ../elsewhere vault/data
    expect_refusal verify vault
    expect_refusal seal source vault
    expect_line err '"data" in it is not a directory'
    rm vault/manifest
    expect_status 2 seal source vault # and does not touch foreign files
    if [ ! -L vault/data ] || [ "$(file_count elsewhere)" -ne 2 ]; then fail "the link's target was changed"; fi
    rm -f vault/vault.json
    expect_refusal verify vault
    expect_refusal verify missing
}

check_hostile_head() {
    small_vault
    cp vault/vault.json good
    local change
    for change in 's/"iterations": 50000/"iterations": 2000001/' 's/"iterations": 50000/"iterations": 0/' \
        's/"iterations": 50000/"iterations": -1/' 's/"iterations": 50000/"iterations": 1.5/' \
        's/"iterations": 50000/"iterations": "50000"/' 's/"format": 2/"format": 3/' 's/"format"/"other"/' \
        's/"AES"/"ROT13"/' 's/"keyLength": 32/"keyLength": 33/' 's/"keyLength": 32/"keyLength": 1e300/' \
        's/"salt": ".*"/"salt": ""/' 's/"salt": "../"salt": "/' 's/"format": 2/"format": 1/' 's/"salt": "/"salt": "zz/' 's/"macSalt": ".*"/"macSalt": "00"/' \
        's/"manifest": ".*"/"manifest": "..\/manifest"/' 's/"manifest": ".*"/"manifest": 7/' 's/{/[/'; do
        sed "$change" good >vault/vault.json
        ! cmp -s good vault/vault.json || fail "nothing was changed by $change"
        expect_refusal verify vault
        ! grep -q 'wrong password' err || fail "the head was accepted: $change"
    done
    printf '[%.0s' $(seq 20000) >vault/vault.json
    expect_refusal verify vault
    # Valid values that were not written
    for change in 's/"iterations": 50000/"iterations": 50001/' 's/"keyLength": 32/"keyLength": 16/' 's/^{$/{ /' \
        's/"macSalt": "\(..\)\(.*\)"/"macSalt": "\2\1"/' 's/"salt": "\(..\)\(.*\)"/"salt": "\2\1"/'; do
        sed "$change" good >vault/vault.json
        ! cmp -s good vault/vault.json || fail "nothing was changed by $change"
        expect_refusal verify vault
        expect_line err 'wrong password, or a damaged manifest'
    done
    cp good vault/vault.json
    expect_status 0 verify vault
}

seal_lines() { # FILE: replaces the entries of the vault with its lines
    local iv=00112233445566778899aabbccddeeff
    { printf '\x00\x11\x22\x33\x44\x55\x66\x77\x88\x99\xaa\xbb\xcc\xdd\xee\xff'
        openssl enc -aes-256-cbc -K "$key" -iv "$iv" -in "$1"; } >body
    { { openssl dgst -sha256 -binary vault/vault.json; cat body; } |
        openssl dgst -sha256 -mac HMAC -macopt "hexkey:$mac_key" -binary; cat body; } >vault/manifest
}

check_hostile_manifest() {
    small_vault
    local key mac_key iv change vault path manifest
    manual_commands vault
    cp entries good
    expect_line good '"path":"folder/two"'
    seal_lines good
    expect_status 0 verify vault # so a refusal below is caused by the change

    # shellcheck disable=SC2016 # the "$" is one of sed
    for change in 's|"path":"one"|"path":"../one"|' 's|"path":"one"|"path":"/one"|' 's|"path":"one"|"path":".."|' \
        's|"path":"one"|"path":"."|' 's|"path":"one"|"path":""|' 's|"path":"one"|"path":"folder/../../one"|' \
        's|"path":"one"|"path":"folder//one"|' 's|"path":"one"|"path":"folder/"|' \
        's|"path":"one"|"path":"folder/two"|' 's|"path":"one"|"path":"folder/two/one"|' \
        's|"path":"one"|"path":"other/one"|' 's|"path":"one"|"path":"one\\u0000"|' 's|"path":"one"|"path":1|' \
        '3s|"iv":"[^"]*"|"iv":"00112233445566778899aabbccddeeff"|;4s|"iv":"[^"]*"|"iv":"00112233445566778899aabbccddeeff"|' \
        's|"type":"folder"|"type":"link","target":"/"|' 's|"nanoseconds":[0-9]*|"nanoseconds":1000000000|' \
        's|"owner":[0-9]*|"owner":-2|' 's|"path":"one"|"path":""|' '1{h;d};2{G}' \
        '/"one"/s|"type":"file"|"type":"hardlink","target":"folder"|' '/"one"/s|"type":"file"|"type":"hardlink","target":"../x"|' \
        's|"permissions":[0-9]*|"permissions":4095|' '/"type":"file"/s|"permissions":[0-9]*|"permissions":1023|' \
        's|"size":4|"size":-4|' 's|"size":4|"size":1e99|' \
        's|"size":4|"size":4.5|' 's|"modified":[0-9]*|"modified":null|' 's|"iv":"..|"iv":"|' \
        's|"treeHash":"..|"treeHash":"|' 's|"type":"file"|"type":"device"|' 's|{|[|' \
        '$s|$|{}|'; do
        sed "$change" good >lines
        ! cmp -s good lines || fail "nothing was changed by $change"
        seal_lines lines
        expect_refusal open vault target
        ! grep -q 'wrong password' err || fail "it was not read: $change"
        expect_absent target
    done

    # A size that fits the sealed file, but not its content; and one larger than any disk
    local size
    for size in 15 5000000000000000; do
        sed "s|\"size\":4|\"size\":$size|" good >lines
        seal_lines lines
        expect_status 1 open vault target
        expect_line err 'orvseal: one: damaged'
        expect_absent target/one
        rm -r target
    done

    # Through a link that leads outside
    mkdir outside
    { sed '/"path":"one"/d' good
        printf '{"type":"link","path":"way","permissions":0,"modified":0,"nanoseconds":0,"owner":0,"group":0,'
        printf '"target":"%s/outside"}\n' "$PWD"
        sed -n 's|"path":"one"|"path":"way/one"|p' good; } >lines
    seal_lines lines
    expect_refusal open vault target
    [ -z "$(ls -A outside)" ] || fail "something went through the link"
}

# Creates "vault" in format 1, as earlier versions did, with the files "one" and "folder/two" and the link "link".
first_format_vault() {
    local salt=0011223344556677 iv=ffeeddccbbaa99887766554433221100 number=0 name key
    key=$(openssl kdf -keylen 32 -kdfopt digest:SHA1 -kdfopt "pass:$ORVSEAL_PASSWORD" -kdfopt "hexsalt:$salt" \
        -kdfopt iter:50000 PBKDF2 | tr -d ':\n') || return
    mkdir -p vault/data
    printf '{"format":1,"algorithm":"AES","keyLength":32,"salt":"%s","iterations":50000,"manifestIv":"%s"}\n' \
        "$salt" "$iv" >vault/vault.json
    {
        echo '{"type":"folder","path":"folder","permissions":448,"modified":981173106789}'
        for name in folder/two link one; do
            if [ "$name" = link ]; then
                echo '{"type":"link","path":"link","permissions":511,"modified":981173106000,"target":"one"}'
                continue
            fi
            number=$((number + 1))
            openssl enc -aes-256-cbc -K "$key" -iv "$(printf '%032d' "$number")" -in "source/$name" \
                -out "vault/data/0000000$number.sealed"
            printf '{"type":"file","path":"%s","permissions":384,"modified":981173106789,' "$name"
            printf '"size":4,"iv":"%032d","treeHash":"%s","sealed":"0000000%d.sealed"}\n' "$number" \
                "$(openssl dgst -md5 -r <"source/$name" | cut -c -32)" "$number"
        done
    } >lines
    { printf 'orvseal manifest 1 %s\n' "$(openssl dgst -sha256 -r <lines | cut -c -64)"; cat lines; } |
        openssl enc -aes-256-cbc -K "$key" -iv "$iv" -out vault/manifest
}

check_first_format() {
    mkdir -p source/folder
    echo one >source/one
    echo two >source/folder/two
    ln -s one source/link
    first_format_vault 2>/dev/null || { echo "    skipped: this openssl derives no keys"; return 0; }
    cp -R vault first
    expect_status 0 list vault
    expect_line out '-rw-------     4.00 B 2001-02-03 04:05:06  folder/two'
    expect_line out 'link -> one'
    expect_status 0 verify vault
    expect_line out 'verified 2 files'
    expect_status 0 open vault target
    expect_same_trees source target
    [ "$(attributes target | grep ' ./one$' | cut -d ' ' -f 1,2)" = '600 981173106.789000000' ] || fail "$(attributes target)"
    change_byte vault/manifest 100
    expect_refusal verify vault
    expect_line err 'wrong password, or a damaged manifest'
    change_byte vault/manifest 100
    change_byte vault/data/00000002.sealed 0
    expect_status 1 verify vault
    expect_line err 'orvseal: one: damaged: its sealed file 00000002.sealed'
    ORVSEAL_PASSWORD=wrong expect_refusal seal source vault
    expect_refusal verify --algorithm aes256 vault
    if [ "$(id -u)" -ne 0 ]; then # unreadable files would be lost
        chmod 000 source/one
        cp -R vault before
        expect_status 2 seal source vault
        expect_line err 'the vault stays in its old format, because one cannot be read now'
        expect_same_trees before vault
        chmod 600 source/one
    fi

    expect_update '0 3 0 0' 2
    expect_line vault/vault.json '"format": 2'
    [ "$(cd vault && echo *)" = 'data manifest-2 vault.json' ] || fail "in the vault are: $(ls vault)"
    [ "$(file_count vault/data)" -eq 2 ] || fail "old files are left: $(ls vault/data)"
    expect_update '0 0 3 0' 0
}

md5_of() { # FILE FIRST COUNT: the MD5 of a range in MiB
    dd if="$1" bs=1048576 skip="$2" count="$3" 2>/dev/null | openssl dgst -md5 -binary
}

check_another_program_can_open_it() {
    mkdir source
    : >source/empty
    head -c 1048576 /dev/urandom >source/one-part
    head -c 2500000 /dev/urandom >source/three-parts
    # With the default number of iterations
    "$program" seal source vault >out || fail "exit status $?"
    expect_line vault/vault.json '"iterations": 1300000'
    md5_of source/empty 0 1 >empty.hash
    md5_of source/one-part 0 1 >one-part.hash
    { { md5_of source/three-parts 0 1; md5_of source/three-parts 1 1; } | openssl dgst -md5 -binary
        md5_of source/three-parts 2 1; } | openssl dgst -md5 -binary >three-parts.hash
    # shellcheck disable=SC2034 # set and used by the commands of the manual
    local name key mac_key iv manifest vault path
    for name in empty one-part three-parts; do
        manual_commands vault "$name"
        [ ! -s manual.err ] || fail "the manual's commands print: $(cat manual.err)"
        cmp restored "source/$name" || fail "the plain text of $name differs"
        grep -F "\"path\":\"$name\"" entries | grep -qF "\"treeHash\":\"$(od -An -tx1 "$name.hash" | tr -d ' \n')\"" ||
            fail "the tree hash of $name differs"
    done
    change_byte vault/manifest 40
    manual_commands vault empty >out
    expect_line out differ
}

summary() { # FILE: the numbers of new, changed, unchanged and removed entries
    sed -n 's/.*; \([0-9]*\) new, \([0-9]*\) changed, \([0-9]*\) unchanged, \([0-9]*\) removed.*/\1 \2 \3 \4/p' "$1"
}

expect_update() { # NUMBERS SEALED-FILES [OPTION]: updates the vault, and compares its content with the source
    expect_status 0 seal "${@:3}" source vault
    [ "$(summary out)" = "$1" ] || fail "not $1: $(cat out)"
    expect_line out "sealed $2 file"
    rm -rf target
    expect_status 0 verify vault
    ! grep -q 'left over' out || fail "something is left over"
    expect_status 0 open vault target
    expect_same_trees source target
    [ "$(attributes source)" = "$(attributes target)" ] || fail "attributes differ: $(attributes source; attributes target)"
}

check_update() {
    mkdir -p source/folder
    local name
    for name in a b c folder/d; do echo "$name" >"source/$name"; done
    ln -s a source/link
    expect_status 0 seal source vault
    cp vault/manifest manifest
    expect_update '0 0 5 0' 0
    cmp manifest vault/manifest || fail "a manifest was written for nothing"
    touch -d '2001-02-03 04:05:06.123456789' source/a # only the time
    echo longer >source/b
    echo longer >>source/folder/d
    rm source/c source/link
    ln -s b source/link
    echo new >source/new
    expect_update '1 4 0 1' 4
    touch -r source/new stamp
    printf 'NEW\n' >source/new && touch -r stamp source/new
    chmod 600 source/b
    expect_status 0 seal source vault
    [ "$(summary out)" = '0 1 4 0' ] || fail "permissions: $(cat out)"
    expect_update '0 1 4 0' 4 --force # finds changes that size and time do not show
    rm -r source/folder source/a source/b
    mkdir source/b # a directory replaces a file
    echo in >source/b/in
    mv source/new source/a
    expect_update '1 1 1 3' 2
    [ "$(file_count vault/data)" -eq 2 ] || fail "sealed files are left: $(ls vault/data)"
    cp -R vault copy
    ORVSEAL_PASSWORD=wrong expect_refusal seal source vault
    expect_line err 'wrong password'
    expect_refusal seal --algorithm des source vault
    expect_refusal seal missing vault
    expect_same_trees copy vault
}

check_unreadable_entries_stay_in_the_vault() {
    mkdir -p source/folder
    echo kept >source/file
    ln source/file source/folder/name
    echo other >source/folder/other
    expect_status 0 seal source vault
    cp -a source before
    if [ "$(id -u)" -ne 0 ]; then
        chmod 000 source/file source/folder
        expect_status 1 seal --force source vault
        expect_line err 'orvseal: file: Permission denied'
        chmod 700 source/folder
        expect_status 0 open vault target
        chmod 700 target/folder # its permissions were readable
        expect_same_trees before target
    else
        echo "    skipped: nothing is unreadable for root"
    fi
}

check_hard_links_to_unreadable_files() {
    if [ "$(id -u)" -eq 0 ]; then
        echo "    skipped: nothing is unreadable for root"
        return 0
    fi
    mkdir source
    ln -s missing source/a
    echo old >source/c
    ln source/c source/d
    expect_status 0 seal source vault
    rm source/a
    echo unreadable >source/a
    ln source/a source/b
    echo new >source/other
    mv source/other source/c
    chmod 000 source/a source/d
    expect_status 1 seal source vault
    expect_line err 'b: hard link to a, which could not be sealed'
    expect_status 0 open vault target
    [ "$(ls -m target)" = 'a, c, d' ] || fail "in the target are: $(ls target)"
    [ "$(readlink target/a) $(cat target/c target/d | tr '\n' ' ')" = 'missing new old ' ] || fail "$(tail target/[cd])"
}

check_missing_sealed_files() {
    small_vault
    rm "$(find vault/data -type f | head -n 1)"
    expect_status 0 seal source vault
    expect_line out '1 sealed file was missing'
    expect_status 0 verify vault
}

check_hostile_lock() {
    small_vault
    mkfifo vault/lock # would block the reader
    expect_refusal seal source vault
    rm vault/lock
    truncate -s 900000000 vault/lock
    expect_refusal seal source vault
    expect_line err 'is not a lock file of orvseal'
}

check_many_jobs() {
    mkdir source
    for number in $(seq 200); do truncate -s 500000 "source/$number"; done
    ulimit -n 100
    expect_status 0 seal --jobs 64 source vault
}

check_hard_links() {
    mkdir -p source/folder
    echo content >source/folder/b
    ln source/folder/b source/c
    ln source/folder/b source/d
    echo content >source/single
    expect_status 0 seal source vault
    [ "$(file_count vault/data)" -eq 2 ] || fail "not stored once"
    expect_status 0 open vault target
    expect_same_trees source target
    if ! [ target/c -ef target/folder/b ] || ! [ target/c -ef target/d ]; then fail "they are no links"; fi
    [ ! target/c -ef target/single ] || fail "it is no link"
    expect_status 0 open vault part folder d # without "c", which is the file in the vault
    [ part/d -ef part/folder/b ] || fail "the links of a part are none"
    expect_absent part/c
    rm source/c
    expect_update '0 2 1 1' 1
    echo changed >source/d
    expect_update '0 2 1 0' 1
}

check_paths() {
    mkdir -p source/folder/inner 'source/folder 2' source/other
    for name in folder/a folder/inner/b 'folder 2/c' other/d; do echo "$name" >"source/$name"; done
    chmod 750 source/folder
    expect_status 0 seal source vault
    expect_status 0 open vault target folder/inner/ './other/d'
    [ "$(cd target && find . -type f | sort | tr '\n' ' ')" = './folder/inner/b ./other/d ' ] || fail "$(find target)"
    [ "$(attributes target | grep ' ./folder$' | cut -d ' ' -f 1)" = 750 ] || fail "the parent directory has other attributes"
    expect_status 1 open vault some folder missing
    expect_line err 'orvseal: missing: it is not in the vault'
    [ "$(cd some && find . -type f | sort | tr '\n' ' ')" = './folder/a ./folder/inner/b ' ] || fail "$(find some)"
    expect_status 2 open vault none missing 'folder 3' ../source
    expect_line err 'orvseal: ../source: it is not in the vault'
    expect_absent none
}

check_holes() {
    mkdir source
    large_file source/large 64
    printf x | dd of=source/large bs=1 seek=30000000 conv=notrunc 2>/dev/null
    large_file source/zeros 1
    head -c 5000 /dev/zero >source/written
    expect_status 0 seal source vault
    expect_status 0 open vault target
    cmp source/large target/large
    expect_same_trees source target
    [ "$(du -k target | cut -f 1)" -lt 1000 ] || fail "zeros take space: $(du -k target)"
}

check_owners() {
    if [ "$(id -u)" -ne 0 ]; then
        echo "    skipped: only root may give files away"
        return 0
    fi
    mkdir source
    echo text >source/file
    ln -s file source/link
    chown -h 12345:23456 source/file source/link source
    chmod 640 source/file
    expect_status 0 seal source vault
    expect_status 0 open vault target
    [ "$(attributes source)" = "$(attributes target)" ] || fail "owners differ: $(attributes target)"
    if command -v setpriv >/dev/null; then
        chmod 711 "$work"
        chmod -R a+rwX .
        setpriv --reuid 54321 --regid 54321 --clear-groups "$program" open vault other >out 2>err || fail "$(cat err)"
        expect_line out '3 entries could not be given to their owners and groups'
    fi
}

check_what_is_not_kept_is_counted() {
    mkdir source
    local name
    for name in a b c; do echo text >"source/$name"; done
    chmod 4755 source/a
    expect_status 0 seal source vault
    expect_line out '1 entry has a set-user-ID or set-group-ID bit, which is not kept'
    ! grep -Eq 'attribute|access control' out || fail "what is not there is counted: $(cat out)"
    if setfattr -n user.test -v x source/a source/b 2>/dev/null; then
        expect_status 0 seal source vault
        expect_line out '2 entries have extended attributes, which are not kept'
    else
        echo "    skipped, in part: setfattr is missing, or the file system has no extended attributes"
    fi
    if setfacl -m u:12345:r source/b 2>/dev/null && setfacl -d -m u:12345:r source 2>/dev/null; then
        expect_status 0 seal source vault
        expect_line out '2 entries have access control lists, which are not kept'
        expect_status 0 open vault target
        [ "$(getfacl -c target/b | grep -c 12345)" -eq 0 ] || fail "the list was kept after all"
    else
        echo "    skipped, in part: setfacl is missing, or the file system has no access control lists"
    fi
}

check_nothing_is_overwritten() {
    small_vault
    mkdir full
    echo mine >full/.mine
    cp -R full before
    expect_refusal seal source full
    expect_same_trees before full
    expect_refusal open vault full
    expect_same_trees before full
    echo mine >file
    expect_refusal seal source file
    expect_refusal open vault file
    expect_line file mine
    ln -s nowhere dangling
    expect_refusal seal source dangling
    expect_absent nowhere
    mkdir empty
    expect_status 0 seal source empty
    mkdir empty-target
    expect_status 0 open vault empty-target/
    expect_same_trees source empty-target
}

check_vault_inside_its_source() {
    small_vault
    expect_refusal seal source source/vault
    expect_refusal seal source source
    expect_refusal seal source ./source/folder/../vault
    ln -s source/folder way
    expect_refusal seal source way/vault
    expect_absent source/vault
    expect_absent source/folder/vault
    expect_refusal open vault vault/target
    expect_refusal seal vault/data vault
    mkdir source-2 # begins with the name of the other one, but is not in it
    expect_status 0 seal source source-2
}

check_skipped_entries() {
    mkdir -p source/folder
    echo kept >source/kept
    mkfifo "source/folder/pipe"
    expect_status 1 seal source vault
    expect_line err "orvseal: folder/pipe: skipped: File is not intended for backup because it's a FIFO/pipe."
    [ "$(wc -l <err)" -eq 1 ] || fail "not one line: $(cat err)"
    grep -q '; 1 problem$' out || fail "no single problem: $(cat out)"
    expect_status 0 open vault target
    [ "$(cat target/kept)" = kept ] || fail "the other file is not there"
    expect_absent target/folder/pipe
}

check_names_that_are_not_utf8() {
    mkdir source
    echo kept >source/kept
    # Some systems reject such a name.
    { echo lost >"source/$(printf 'b\377d')"; } 2>/dev/null || return 0
    expect_status 1 seal source vault
    expect_line err 'skipped: its name or target is not valid UTF-8'
    expect_status 0 open vault target
    [ "$(ls target)" = kept ] || fail "in the target are: $(ls target)"
}

check_unreadable_entries() {
    if [ "$(id -u)" -eq 0 ]; then
        echo "    skipped: nothing is unreadable for root"
        return 0
    fi
    mkdir -p source/closed
    echo kept >source/kept
    echo closed >source/secret
    chmod 000 source/secret source/closed
    expect_status 1 seal source vault
    expect_line err 'orvseal: secret: '
    expect_line err 'orvseal: closed: '
    [ "$(wc -l <err)" -eq 2 ] || fail "not two lines: $(cat err)"
    expect_status 0 verify vault
    expect_line out 'verified 1 file'
    chmod 000 vault/data/*
    expect_status 1 verify vault
    expect_line err ': Permission denied'
    ! grep -q damaged err || fail "it is called damaged: $(cat err)"
}

check_arguments_with_a_colon() { # which Qt looks for among its own resources
    mkdir :source
    echo text >:source/:file
    printf secret >:password
    expect_status 0 seal --password-file :password --log-dir :log :source :vault
    expect_line :log/log_orvseal.log 'sealed 1 file'
    expect_status 0 open --password-file :password :vault :target
    expect_same_trees :source :target
}

check_output_that_cannot_be_written() {
    small_vault
    local status row
    for row in '<&- >&-' '>/dev/full' '>&4'; do
        if [ "$row" = '>/dev/full' ] && [ ! -w /dev/full ]; then continue; fi
        rm -f pipe
        mkfifo pipe
        exec 3<>pipe
        exec 4>pipe 3<&- # nobody reads from 4
        status=0
        eval '"$program" list --log-dir log vault 2>err' "$row" || status=$?
        exec 4>&-
        [ "$status" -eq 2 ] || fail "exit status $status, not 2, with $row"
        [ "$(cat err)" = 'orvseal: standard output cannot be written' ] || fail "with $row: $(cat err)"
    done
    # The number of a closed stream must not be used for a file, which would then receive the output.
    mkfifo source/skipped
    if "$program" seal --log-dir log source other <&- >&- 2>&-; then fail "no status of what could not be printed"; fi
    expect_line log/log_orvseal.log 'skipped: '
    ! grep -q '^orvseal: ' log/log_orvseal.log || fail "what was printed is in the log: $(cat log/log_orvseal.log)"
    expect_status 0 verify other
}

check_progress_on_a_terminal() {
    mkdir source
    large_file source/large 50
    echo small >source/small
    mkfifo source/pipe
    if ! script -qc true /dev/null >/dev/null 2>&1 </dev/null; then
        echo "    skipped: the program \"script\" is missing, or is another one"
        return 0
    fi
    local erase=$'\r\033[K' status=0
    script -qec "stty cols 60; $program seal --iterations 50000 --jobs 1 --algorithm des3 source vault" /dev/null \
        >out </dev/null || status=$?
    [ "$status" -eq 1 ] || fail "exit status $status ($(cat out))"
    grep -Eq '\[#+ *\] sealing [0-9]+ %, 00:00:[0-9]+ left, [0-9] of 2 files' out || fail "no progress: $(cat -v out)"
    # A bar replaces the one before without erasing it first, which would flicker; only the summary does.
    [ "$(grep -oF "$erase" out | wc -l)" -eq 1 ] || fail "the bar is erased: $(cat -v out)"
    tr '\r' '\n' <out | sed 's/\x1b\[K//' | awk 'length > 59 && /left/ { exit 1 }' || fail "a line wraps: $(cat -v out)"
}

check_few_threads() {
    mkdir source
    for name in a b c d e f; do echo "$name" >"source/$name"; done
    # Memory for the program and the stack of one thread
    (ulimit -s 1000000 -v 1800000 && "$program" --help) >/dev/null 2>&1 ||
        { echo "    skipped: the program does not run in little memory"; return 0; }
    (
        ulimit -s 1000000 -v 1800000
        expect_status 0 seal --jobs 8 source vault
        expect_status 0 open --jobs 8 vault target
    )
    expect_same_trees source target
}

check_usage() {
    small_vault
    expect_refusal
    expect_refusal frobnicate vault
    expect_refusal seal
    expect_refusal seal source
    expect_refusal seal source new extra
    expect_refusal list vault extra
    expect_refusal seal '' new
    expect_refusal seal missing new
    expect_refusal seal source missing/new
    expect_refusal seal --nonsense source new
    expect_refusal seal --password secret source new
    expect_refusal seal --algorithm rot13 source new
    expect_line err 'aes128, aes192, aes256, des, des112, des3'
    expect_refusal verify --algorithm aes256 vault
    for jobs in 0 -1 x '' 65; do expect_refusal seal --jobs "$jobs" source new; done
    expect_absent new
    expect_status 0 --help
    expect_line out 'Exit status'
}

interrupt() { # SIGNAL STATUS CONDITION COMMAND...: sends the signal once the condition holds
    local signal=$1 expected=$2 condition=$3 process status=0
    shift 3
    "$program" "$@" >out 2>err </dev/null &
    process=$!
    wait_for eval "$condition"
    kill "-$signal" "$process"
    wait "$process" || status=$?
    [ "$status" -eq "$expected" ] || fail "exit status $status, not $expected ($(cat err))"
    expect_line err 'interrupted'
}

check_interrupt() {
    mkdir source
    large_file source/large 4096
    interrupt INT 130 '[ -s vault/data/* ]' seal source vault
    expect_absent vault
    interrupt HUP 129 '[ -s vault/data/* ]' seal source vault
    expect_absent vault
    mkdir vault
    interrupt TERM 143 '[ -s vault/data/* ]' seal source vault
    [ -z "$(ls -A vault)" ] || fail "in the vault are: $(ls -A vault)"
}

check_hangup_that_the_caller_ignores() { # as nohup does
    mkdir source
    echo text >source/file
    mkfifo password
    (trap '' HUP; exec "$program" seal --password-file password source vault >out 2>err </dev/null) &
    local process=$!
    exec 3>password # waits for the program to come and read it
    kill -HUP "$process"
    printf secret >&3
    exec 3>&-
    wait "$process" || fail "exit status $? ($(cat err))"
    expect_line out 'sealed 1 file'
}

check_interrupted_opening() {
    mkdir source
    echo small >source/a
    large_file source/b 100
    expect_status 0 seal --algorithm des3 source vault # a slow algorithm, so that there is time
    interrupt INT 130 '[ -e target/a ] && [ -e target/.orvseal-*/* ]' open --jobs 1 vault target
    [ "$(ls -A target)" = a ] || fail "in the target are: $(ls -A target)"
    cmp source/a target/a || fail "the complete file differs"
}

check_log() {
    small_vault
    local sealed
    sealed=$(sealed_of vault one)
    [ -f "$sealed" ] || return 0
    change_byte "$sealed" 0
    expect_status 1 verify --log-dir log/folder vault
    expect_line log/folder/log_orvseal.log 'verify begins'
    expect_line log/folder/log_orvseal.log '[WARNING]: [ orvseal ]'
    expect_line log/folder/log_orvseal.log 'one: '
    expect_line log/folder/log_orvseal.log 'verified 1 file'
    ! grep -q 'INFO' out err || fail "the log came to the terminal"
    ORVSEAL_PASSWORD=wrong expect_refusal verify --log-dir log/folder vault
    expect_line log/folder/log_orvseal.log 'wrong password'
    ! grep -rq 'correct horse' log || fail "the password is in the log"
    : >occupied
    expect_refusal verify --log-dir occupied/folder vault
    mkdir -p no-log/log_orvseal.log
    expect_refusal verify --log-dir no-log vault
    expect_line err 'no-log/log_orvseal.log cannot be written'
}

check_no_log_without_a_directory() {
    small_vault
    mkfifo password
    mkdir elsewhere
    (cd elsewhere && exec "$program" list --password-file ../password ../vault >../out 2>../err </dev/null) &
    local process=$!
    exec 3>password # waits for the program to come and read it
    if [ -d "/proc/$process/fd" ]; then
        ! find "/proc/$process/fd" -lname '*.log' -exec readlink {} + | grep . || fail "a log is open"
    fi
    printf %s "$ORVSEAL_PASSWORD" >&3
    exec 3>&-
    wait "$process" || fail "exit status $? ($(cat err))"
    [ -z "$(ls -A elsewhere)" ] || fail "a file was created: $(ls -A elsewhere)"
}

run_checks "${@:2}"
