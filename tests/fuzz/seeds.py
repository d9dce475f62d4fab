#!/usr/bin/env python3
"""Writes the seeds of the corpora: what the fuzzer begins with, one small file each. Inputs that
once showed a mistake are files of their own beside them, named after it."""

import os

_PIECE_END = b"\xfe"


def run(count, byte):
    """Twice that number of that byte (see Fuzzed.h)."""
    return b"\xfd" + count.to_bytes(2, "big") + byte


def pieces(*texts):
    return _PIECE_END.join(text if isinstance(text, bytes) else text.encode() for text in texts)


_STRUCTURED = 'time="2026-03-09T14:05:00Z" level=info msg="'

OUTPUT_LINES = {
    "empty": b"",
    "lines": pieces("one\ntwo\n\nthree"),
    "kept": pieces(_STRUCTURED + 'a"\n', "Error: unknown flag\n", "Error\ntime=x\n"),
    "debug": pieces('time="x" level=debug msg=b\n', 'time="x" level=', "debug\n"),
    "two_reads": pieces('time="x" level=info msg=a\ntime=', '"y" level=debug msg=b\n'),
    "pairs": pieces("a\r\nb\r\n", "c\n", "\r", "\n", "\n\r\n\n"),
    "cut_character": pieces(b"a\xe2\x80", b"\xa6\n", "…\n"),
    "ill_formed": pieces(b"a\xff\n", "b\n", b"\xed\xa0\x80\n", b"\xc0\x80\n"),
    "zero": pieces("a\0b\n"),
    "marks": pieces("e\u0301\n\u0301\n"),
    "just_fits": pieces(run(32000, b"y"), "\n"),
    "too_long": pieces(run(35000, b"y"), "end\n", "x\n"),
    "too_long_with_marks": pieces(run(20000, b"y"), "e\u0301" * 40, run(20000, b"z"), "\n"),
    "too_long_then_pair": pieces(run(35000, b"y") + b"\r", "\n\n"),
    "repository": pieces(_STRUCTURED + 'task 7 repo is acme/site ok"\n', "repo is acme\n",
                         " repo is \n", " repo is    b c\n"),
    "worker": pieces("Worker 3 finished (ok)\nWorker started\njob finished (ok)\n"),
    "declared": pieces("x declare successfully\nDeclare successfully\n"),
    "network": pieces("dial tcp: no route to host\npermission denied\n"),
    "version": pieces("runner: act, with version: v0.2.11, with labels: [a], declare "
                      "successfully\n",
                      "with version: \nwith version: ,\nwith version: 1 with version: 2\n"),
    "job": pieces("Running job with maxParallel 1\n[CI/build] a\n[CI/build] b\n[//a/b] c\n"),
    "labels": pieces("[a/]\n[/b]\n[]\n[ab]\n[a/b/c]\n[My Flow/job] x\n[a/b c] x\nx [a/b]\n[a/b"),
    "job_taken_back": pieces("[a/b] x\ndeclare successfully\n[a/b] y\n[a/bc]\n[a/b]\n"),
    "several_on_one_line": pieces("[a/b] repo is c Running job with maxParallel Worker finished ( "
                                  "declare successfully no route to host permission denied\n"),
    "nearly": pieces("o i h v h m d ( e s o h n d\nfinished(\nno route\n"),
}

LOG_TAIL = {
    "empty": b"",
    "lines": pieces("aone\ntwo\n", "p", "athree\n", "p"),
    "half_a_line": pieces("aone\ntw", "p", "ao\n", "p"),
    "cut": pieces("aone\ntwo\nthree\n", "p", "t1234", "p", "ax\n", "p"),
    "cut_by_a_byte": pieces("aone\ntwo", "p", "t1", "p"),
    "cut_to_nothing": pieces("aone\n", "p", "t12345678", "p"),
    "replaced_by_shorter": pieces("aone\ntwo\n", "l", "rnew\n", "p"),
    "replaced_by_longer": pieces("aone\n", "l", "rnew and longer\n", "p"),
    "replaced_by_equal": pieces("aone\n", "l", "rtwo\n", "p", "l"),
    "removed": pieces("aone\n", "p", "d", "p", "l", "p", "atwo\n", "p"),
    "cleared": pieces("aone\n", "p", "c", "p", "atwo\n", "p"),
    "pairs": pieces("aa\r\nb\r\n", "p", "a\r", "p", "a\n\n\r\n", "p", "l"),
    "only_ends": pieces("a\n\n\n", "p", "l"),
    "ill_formed": pieces(b"a\xff\xe2\x82\n\xed\xa0\x80\n", "p", b"a\xf0\x9f", "p",
                         b"a\x90\xa6\n", "p"),
    "zero": pieces("a\0\n\0", "p"),
    "block": pieces(b"a" + run(32768, b"x") + b"\n", "p", "l"),
    "pair_at_the_edge_of_a_block": pieces(b"aA\r\n" + run(32767, b"x") + b"x", "p", "l"),
    "end_at_the_edge_of_a_block": pieces(b"aA\n\n" + run(32767, b"x") + b"x", "p", "l"),
    "block_within_character": pieces("a€\n".encode() + run(32766, b"x") + b"\n\n", "l"),
    "two_blocks": pieces(b"aone\n" + run(65535, b"x") + b"\nlast\n", "p", "l"),
    "many_lines": pieces(b"a" + run(3000, b"\n"), "p", "l", "ax\n", "p"),
    "more_lines_than_kept": pieces(b"aold\n" + run(2400, b"\n"), "p", b"a" + run(2000, b"\n"), "p"),
}

_RECORD = ('{"id":"legacy","name":"runner","instanceURL":"","labels":"macos",'
           '"extraPath":"","legacy":true}')
_OTHER = ('{"legacy":false,"extraPath":"/a:/b","labels":"x,y",'
          '"instanceURL":"https:\\/\\/git.test/",'
          '"name":"Zoë \\u00fc \\ud83d\\udc26","id":"7F"}')

RUNNER_RECORDS = {
    "empty": b"",
    "no_records": b"[]",
    "one": f"[{_RECORD}]".encode(),
    "two": f"[{_RECORD},{_OTHER}]".encode(),
    "same_twice": f"[{_RECORD},{_RECORD}]".encode(),
    "blanks": f" \n[ {_RECORD} \t,\r\n {_OTHER} ] \n".encode(),
    "other_keys": f'[{_RECORD[:-1]},"more":[1,-0.5e+3,{{}},null,true,"x"]}}]'.encode(),
    "key_twice": f'[{_RECORD[:-1]},"id":"second"}}]'.encode(),
    "key_twice_with_another_type": f'[{_RECORD[:-1]},"id":1}}]'.encode(),
    "key_missing": b'[{"id":"a","name":"","instanceURL":"","labels":"","legacy":true}]',
    "null": f"[{_RECORD},null]".encode(),
    "text_for_truth": _RECORD.replace("true", '"true"').join("[]").encode(),
    "number_for_text": _RECORD.replace('"macos"', "7").join("[]").encode(),
    "object": _RECORD.encode(),
    "cut": f"[{_RECORD}"[:60].encode(),
    "rubbish_behind": f"[{_RECORD}] x".encode(),
    "zeros": b"\0" * 40,
    "zero_behind": f"[{_RECORD}]\0 rubbish".encode(),
    "byte_order_mark": b"\xef\xbb\xbf" + f"[{_RECORD}]".encode(),
    "ill_formed": f"[{_RECORD}]".encode().replace(b"runner", b"run\xff\xc3"),
    "half_a_pair": f"[{_RECORD}]".replace("runner", "\\ud83d").encode(),
    "escapes": f"[{_RECORD}]".replace("runner",
                                      "\\\"\\\\\\/\\b\\f\\n\\r\\t\\u0000\\u002f").encode(),
    "control_character": f"[{_RECORD}]".replace("runner", "a\nb").encode(),
    "great_number": f'[{_RECORD[:-1]},"n":1e400}}]'.encode(),
    "deep": b"[" * 500 + b"]" * 500,
    "deep_in_a_record": f'[{_RECORD[:-1]},"n":'.encode() + b"[" * 300 + b"]" * 300 + b"}]",
    "texts": pieces("id", "name \"x\" \\ / \n\t\0", "https://a/b", "a,b", "/x", "2", "Zoë", "🐦"),
    "ill_formed_texts": pieces("id", b"\xff", b"\xe2\x82", "a", "b"),
}

RELEASE_ANSWER = {
    "empty": b"",
    "release": pieces('{"id": 7, "tag_name": "v0.2.11", "assets": [{"name": "x"}], "body": null}',
                      "v0.2.11", "0.2.10"),
    "within": pieces('{"a": {"tag_name": "v1"}, "b": [{"tag_name": "v2"}]}'),
    "twice": pieces('{"tag_name": 1, "tag_name": "v2"}', "2"),
    "twice_without": pieces('{"tag_name": "v2", "tag_name": {"tag_name": "v3"}}'),
    "array": pieces('[{"tag_name": "v1"}, "tag_name", "v2"]'),
    "number": pieces('{"tag_name": 7}'),
    "page": pieces("<html>404</html>", "1"),
    "message": pieces('{"message": "not found", "url": "https://x/"}'),
    "escaped_name": pieces('{"tag\\u005fname": "v1\\u0000\\ud83d\\udc26"}'),
    "cut": pieces('{"tag_name": "v1'),
    "zero_behind": pieces('{"tag_name": "v1"}\0 rubbish'),
    "byte_order_mark": pieces('\ufeff{"tag_name": "v1"}'),
    "great_number": pieces('{"tag_name": "v1", "n": 1e999}'),
    "deep": pieces('{"a": ' + "[" * 400 + "]" * 400 + ', "tag_name": "v1"}'),
    "ordinary": pieces("", "v1.10.0", "1.9.9", "1.2", "1.2.0", "1.2.0.1", "1.2.1", "", "0.0", "1"),
    "leading": pieces("", "vv1.2", "V1.2", "vV1", ".5.", "1..2", "v.", "...", " 1", "-1", "+1"),
    "suffixes": pieces("", "v0.3.0-rc1", "0.3.0", "1.2.x", "1.2 beta", "1.2\n.3", "1+2"),
    "great": pieces("", "99999999999999999999.1", "9223372036854775807", "9223372036854775808",
                    "18446744073709551616.2", "00000000000000000000012.3"),
    "numerals": pieces("", "v٣.5", "1³.2", "½", "Ⅳ.1", "一.萬", "𝟗", "㊉", "1٫2", "1。2"),
    "marks": pieces("", "1.\u03082", "v\u03081", "1\u0308.2", "1\ufe0f\u20e3.2", "1\u0600.2"),
    "ill_formed": pieces("", b"1.2\xff.3", b"1\xe4\xb8", b"1\xc0\xae.2", b"1\xed\xa0\x80.2"),
}

_ENTRY = "[Desktop Entry]\nType=Application\nName=Valdorn\nExec=\"/opt/val dorn/100%%/valdorn\"\n"

DESKTOP_ENTRY = {
    "empty": b"",
    "ours": pieces(_ENTRY + "Icon=org.valdorn.valdorn\nTerminal=false\n", "x"),
    "by_hand": pieces("# mine\n\n[Desktop Entry]\nType=Application\nName[de] = Waldohr \n"
                      "Exec=/old/valdorn\n\n[Desktop Action quit]\nExec=/foreign\n", "/new"),
    "hidden": pieces(_ENTRY + "Hidden=true\n", "false"),
    "hidden_by_digit": pieces(_ENTRY + "Hidden = 1\n", "0"),
    "off_for_one_desktop": pieces(_ENTRY + "X-GNOME-Autostart-enabled=false\n", ""),
    "twice": pieces("[Desktop Entry]\nExec=1\n[Other]\nExec=2\n[Desktop Entry]\nExec=3\n", "4"),
    "line_ends": pieces("[Desktop Entry]\r\nExec=1\r\nName=x\r\n", "a\r\nb"),
    "no_last_end": pieces("[Desktop Entry]\nExec=1", "2"),
    "no_group": pieces("[Other]\nExec=1", "2"),
    "malformed": pieces("Exec=before\n[Desktop Entry]\nnonsense\n=x\n[Open\nExec=1\n", "2"),
    "odd_groups": pieces("[]\nExec=1\n[Desktop Entry]x]\nExec=2\n [Desktop Entry] \nExec=3\n", "a"),
    "no_value": pieces("[Desktop Entry]\nExec=\nHidden\n", ""),
    "try_exec": pieces(_ENTRY + "TryExec=/gone/valdorn\n", "/gone"),
    "other_program": pieces("[Desktop Entry]\nExec=/usr/bin/env valdorn --quiet %U\n",
                            "/usr/bin/env"),
    "wrapper": pieces("[Desktop Entry]\nExec=\"/my apps/v\" \"an argument\"\n", "/my apps/v"),
    "ill_formed": pieces(b"\xff\xfe\0rubbish", b"\xff"),
    "escapes": pieces("[Desktop Entry]\nName=a\\sb\\n\\t\\r\\\\\\x\\\n", "a\\b\nc\td\re"),
    "blanks": pieces("[Desktop Entry]\n\tExec = a b \t\n", " leading"),
    "quotes": pieces(_ENTRY, "/a\"b`c$d\\e%f"),
    "percent": pieces(_ENTRY, "/100%u/%%/x%"),
    "ends_in_backslash": pieces(_ENTRY, "/trailing\\"),
}

USER_DEFAULTS = {
    "empty": b"",
    "ours": pieces("[General]\nhasConnected=true\ninstanceURL=https://git.test\nlabels=macos\n",
                   "a"),
    "before_any_section": pieces("hasConnected=1\nrunnerName=ada-mac-mini\n", "b"),
    "commas": pieces("[General]\nlabels=ubuntu-latest:docker://node:20,host:host\n", "a, b,,c"),
    "quotes": pieces('[General]\nlabels="a b", "c"\nextraPath="/a:/b"\n', '"x" \\ \'y\''),
    "foreign": pieces("[General]\nforeign=1\n\n[Other]\nlabels=x\n%41b=1\n", ""),
    "escapes": pieces("[General]\nrunnerName=\\x41\\n\\t\\\\\\\"\\x1f426\\0\n", "\n\t\0\x07\x1b"),
    "at_signs": pieces("[General]\nlabels=@Invalid()\nrunnerName=@@x\nextraPath=@ByteArray(a)\n",
                       "@String(x)"),
    "variant": pieces(b"[General]\nlabels=@Variant(\\0\\0\\0\\x2\\0\\0\\0\\a)\n", "@Variant(x)"),
    "variant_escaped": pieces('[General]\nother="\\x40Vari"ant(\\0\\0\\0\\x2\\0\\0\\0\\a)\n',
                              "x@Variant(y)"),
    "variant_in_list": pieces("[General]\nother=a, @Variant(\\0\\0\\0\\x2\\0\\0\\0\\a)\n",
                              "a,@Variant(b)"),
    "variant_behind_mark": pieces("[General]\nother=\ufeff@Variant(\\0\\0\\0\\x2\\0\\0\\0\\a)\n",
                                  "\ufeff@Variant(b)"),
    "marks": pieces("[General]\nlabels=\ufeff\ufeffa\nrunnerName=\\n\ufeffb\n", "\ufeffc"),
    "variant_behind_comment": pieces('; "\nlabels=@DateTime(\\0)\n', ";@DateTime(\n"),
    "comment": pieces("; mine\n[General]\nlabels=a ; not mine\n", "; c"),
    "line_ends": pieces("[General]\r\nlabels=a\r\nrunnerName=b\r\n", "\r\n"),
    "malformed": pieces("[General\nlabels\n=x\n]\n[]\nlabels=a\n", "b"),
    "ill_formed": pieces(b"[General]\nlabels=\xff\xc3\n", b"\xff"),
    "zero": pieces(b"[General]\nlabels=a\0b\nrunnerName=c\n", "\0"),
    "continued": pieces("[General]\nlabels=a\\\n b\nrunnerName=c\n", "\\"),
    "case": pieces("[general]\nLabels=a\nlabels=b\n[%General]\nlabels=c\n", "d"),
    "other_scripts": pieces("[General]\nrunnerName=Zoë 鸟 🐦\n", "Zoë 鸟 🐦 \u0301"),
}

UNICODE_TEXT = {
    "empty": b"",
    "ascii": pieces("level=warning job 7, longer than one word of a machine", "JOB"),
    "capitals": pieces("@AZ[`az{ ABCDEFGHIJKLMNOPQRSTUVWXYZ", "z"),
    "late_character": pieces("0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdefé",
                             "É"),
    "marks": pieces("cafe\u0301 au lait", "caf\u00e9"),
    "order_of_marks": pieces("q\u0307\u0323", "Q\u0323\u0307"),
    "sharp_s": pieces("STRASSE", "straße"),
    "ligature": pieces("\ufb01le not found", "FILE"),
    "sigma": pieces("ΟΔΟΣ ΟΔΥΣΣΕΩΣ", "οδος"),
    "subscript": pieces("\u1fb3\u0323", "\u03b1\u0323\u0345"),
    "turkish": pieces("DIYARBAKIR \u0130stanbul I\u0307", "d\u0131yarbak\u0131r"),
    "syllables": pieces("\u1112\u1161\u11ab\ud55c", "\ud558"),
    "flags": pieces("\U0001f1e9\U0001f1ea\U0001f1f8", "\U0001f1ea\U0001f1f8"),
    "family": pieces("the \U0001f468\u200d\U0001f469\u200d\U0001f467!", "\U0001f468"),
    "skin": pieces("ok\U0001f44d\U0001f3fd", "\U0001f44d"),
    "pairs": pieces("a\r\nb", "\n"),
    "lone_ends": pieces("a\r\nb\rc\n", "\n"),
    "leaning": pieces("\u0600Ab", "a"),
    "zero": pieces("A\0B", "\0b"),
    "kelvin": pieces("300 \u212a \u212b", "300 k a\u030a"),
    "deseret": pieces("\U00010400", "\U00010428"),
    "ill_formed": pieces(b"Abc\xff\x80\xc0\xaf\xe2\x82\xed\xa0\x80\xf0\x80\x80\xf4\x90\x80"
                         b"\xf0\x9f\x90",
                         "c\ufffd"),
    "cut": pieces(b"a\n\xf0\x9f\x90", b"\xf0\x9f"),
    "edges": pieces("\x7f\u0080\u07ff\u0800\ud7ff\ue000\uffff\U00010000\U0010ffff", "\uffff"),
    "alone": pieces("\u0301a\n\u0301", "\u0301"),
}

SEEDS = {
    "desktop_entry": DESKTOP_ENTRY,
    "log_tail": LOG_TAIL,
    "output_lines": OUTPUT_LINES,
    "release_answer": RELEASE_ANSWER,
    "runner_records": RUNNER_RECORDS,
    "unicode_text": UNICODE_TEXT,
    "user_defaults": USER_DEFAULTS,
}


def main():
    corpus = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")
    for target, seeds in SEEDS.items():
        folder = os.path.join(corpus, target)
        os.makedirs(folder, exist_ok=True)
        for name, content in seeds.items():
            with open(os.path.join(folder, name), "wb") as file:
                file.write(content)


if __name__ == "__main__":
    main()
