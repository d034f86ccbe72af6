"""The page of a trace in headless Chromium: what it shows, and what it must not do."""

import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

from browser import Browser

PHONE = os.environ["PHONE"]
LONG = int(os.environ.get("LONG", 100000))


def message(method, *fields):
    return f"<Method>{method}</Method>" + "".join(f"<{tag}>{value}</{tag}>" for tag, value in fields)


def request(time, number, text, **more):
    return dict(time=time, kind="request", number=number, sending="request", text=text, **more)


def answer(time, number, text, **more):
    return dict(dict(time=time, kind="answer", number=number, sending="request", delivery="done",
                     text=text), **more)


def event(time, text):
    return dict(time=time, kind="event", channel="subscriber-1", text=text)


def state(time, line, call, number):
    return event(time, message("CallStateChangeEvent", ("LineID", line), ("CallID", call),
                               ("CallState", number), ("URI", "sip:2001@host"), ("Name", "Zoë")))


# Two calls on two lines, everything that can be refused, and what is not a message.
HEAD = {"trace": 2, "start": "2026-03-01T09:30:00.000000Z", "program": "a phone"}
CALLS = [
    request(0.5, 1, message("OutgoingCallMakeRequest", ("Line", "1001"), ("CallID", 0),
                            ("Destination", "2001"), ("DSSDirectCall", 0)), thread=3),  # 0
    state(0.6, "1001", 5, 1),                                                         # 1
    answer(0.7, 1, "sfiSuccess"),                                                     # 2
    state(3.2, "1001", 5, 5),                                                         # 3
    event(3.3, message("IncomingCallEvent", ("LineID", "1002"), ("CallID", 6),
                       ("URI", "sip:2042@host"), ("Name", "Robin"))),                 # 4
    request(4.0, 2, message("HoldCall", ("Line", "1001"), ("CallID", 5),
                            ("HoldCallReason", 1), ("Manual", 1))),                   # 5
    answer(4.1, 2, "sfiFailure"),                                                     # 6
    request(4.2, 3, message("getForwardingConfiguration", ("fwType", 3))),            # 7
    answer(4.3, 3, "<sfiResult>sfiSuccess</sfiResult><status>1</status><uri>2077</uri>"),  # 8
    dict(time=4.4, kind="control", text="advance 2s"),                                # 9
    request(70.0, 4, message("AnswerCall", ("Line", "1002"), ("CallID", 6))),         # 10
    answer(75.0, 4, "", delivery="timedOut"),                                         # 11
    dict(time=75.5, kind="exception", channel="subscriber-1", text="out of paper"),   # 12
    request(76.0, 5, message("AnswerCall", ("Line", "1002"), ("CallID", 6))),         # 13
    dict(time=76.1, kind="exception", number=5, text="no service"),                   # 14
    dict(time=76.2, kind="dropped", count=17),                                        # 15
    event(76.3, message("FeatureFailedEvent", ("LineID", "1002"), ("CallID", 6),
                        ("Feature", 1), ("FeatureFailure", 2))),                      # 16
]

HOSTILE = [
    "<script>document.title='broken'</script>",
    "</script><script>document.title='broken'</script>",
    "<!--<script>",
    "\"><img src=x onerror=\"document.title='broken'\">",
    "&lt;b&gt; &#60;b>",
    "a\u2028b\u2029c",
    "abc\u202ecba",
    "javascript:alert(1)",
]


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.browser = Browser()

    @classmethod
    def tearDownClass(cls):
        cls.browser.__exit__()
        cls.folder.cleanup()

    def setUp(self):
        self.browser.resize(1280, 1000)
        self.browser.media()

    def tearDown(self):
        self.assertEqual(self.browser.errors, [])

    def path(self, name):
        return os.path.join(self.folder.name, name)

    def phone(self, *arguments):
        return subprocess.run([PHONE, *arguments], capture_output=True, text=True, check=False)

    def write(self, records, head=HEAD, rest=""):
        with open(self.path("a.trace"), "w", encoding="utf-8") as file:
            for record in [head, *records]:
                file.write(json.dumps(record, separators=(",", ":")) + "\n")
            file.write(rest)

    def open(self, records, **more):
        self.write(records, **more)
        made = self.phone("--ladder-from", self.path("a.trace"), "--html", self.path("a.html"))
        self.browser.open(self.path("a.html"))
        return made

    def rows(self):
        """The numbers of the records that are shown."""
        return self.browser.evaluate("[...document.querySelectorAll('[data-index]')]"
                                     ".map((row) => Number(row.dataset.index))")

    def text(self, selector):
        return self.browser.evaluate(f"document.querySelector({json.dumps(selector)}).innerText")

    def fields(self):
        """What the table of fields says: name, meaning, value, value as it travelled."""
        return self.browser.evaluate(
            "[...document.querySelectorAll('aside tr')].map((row) => [row.cells[0].firstChild.data,"
            " row.cells[0].lastChild.textContent, row.cells[1].firstChild?.data ?? '',"
            " row.cells[1].lastChild.textContent])")

    def choose(self, selector, value):
        self.browser.evaluate(f"""(() => {{
            const list = document.querySelector({json.dumps(selector)});
            list.value = {json.dumps(value)};
            list.dispatchEvent(new Event("change", {{bubbles: true}}));
        }})()""")
        self.browser.frame()

    def drawn(self):
        """What the rows show, as lines of a sequence diagram."""
        return self.browser.evaluate("""[...document.querySelectorAll("[data-index]")].flatMap((row) => {
            const names = document.querySelectorAll("#head .name");
            const note = row.querySelector(".note");
            if (note) return ["note: " + note.textContent];
            const [own, far] = row.querySelectorAll(".arrow");
            const text = (arrow) => arrow.querySelector(".label").textContent;
            const left = own.classList.contains("left");
            const line = !left ? "application->>service: " : row.classList.contains("answer")
                ? "service-->>application: " : "service->>application: ";
            const name = far && names[Number(far.style.gridColumn.match(/span (\\d+)/)[1]) + 1].textContent;
            const beyond = !far ? [] : [(far.classList.contains("left") ? "from " : "to ") +
                                        (name === "others" ? "" : name + ": ") + text(far)];
            return left ? [...beyond, line + text(own)] : [line + text(own), ...beyond];
        })""")

    def test_tells_the_same_as_the_ladder(self):
        # Twice: what was run here, and what was read from the trace of it.
        self.phone("--script", "everything", "--trace", self.path("a.trace"), "--html", self.path("a.html"))
        diagram = self.phone("--ladder-from", self.path("a.trace"), "--mermaid").stdout
        diagram = re.sub(r"#(\w+);", lambda code: {"35": "#", "59": ";", "lt": "<", "gt": ">"}[code[1]], diagram)
        names = dict(re.findall(r"participant (far\d+) as (.*)", diagram))
        expected = [re.sub(r"^service->>(far\d+)|^(far\d+)->>service",
                           lambda far: "to " + names[far[1]] if far[1] else "from " + names[far[2]],
                           line.strip().replace("Note over service", "note"))
                    for line in diagram.splitlines()[1:] if "participant " not in line]
        self.assertGreater(len(names), 6)  # more than have columns of their own
        self.assertGreater(len(expected), 300)
        self.browser.resize(1280, 15000)
        self.browser.open(self.path("a.html"))
        self.assertEqual(self.drawn(), expected)
        self.phone("--ladder-from", self.path("a.trace"), "--html", self.path("a.html"))
        self.browser.open(self.path("a.html"))
        self.assertEqual(self.drawn(), expected)

    def test_shows_each_message_as_it_travelled(self):
        self.phone("--script", "everything", "--trace", self.path("a.trace"), "--html", self.path("a.html"))
        self.browser.open(self.path("a.html"))
        with open(self.path("a.trace"), encoding="utf-8") as file:
            texts = [json.loads(line)["text"] for line in file.readlines()[1:]]
        shown = self.browser.evaluate(
            f"Array.from({{length: {len(texts)}}}, (_, i) => (choose(i),"
            " document.querySelector('aside pre')?.textContent ?? ''))")
        unseen = re.compile("[\0-\x08\x0b-\x1f\x7f]")
        self.assertEqual(shown, [unseen.sub(lambda c: f"\\x{ord(c[0]):02x}", text) for text in texts])

    def test_loads_nothing_else(self):
        self.open(CALLS)
        self.assertEqual(self.browser.loaded, ["file://" + self.path("a.html")])
        with open(self.path("a.html"), encoding="utf-8") as file:
            self.assertNotIn("://", file.read().replace("sip:", ""))

    def test_tells_what_it_shows(self):
        self.open(CALLS)
        self.assertEqual(self.text("#name"), "a.trace")
        self.assertEqual(self.browser.evaluate("document.title"), "a.trace")
        self.assertEqual(self.text("#summary"), "17 messages · 1 min 16 s · 2 lines · 2 calls · 5 refused")
        self.assertEqual(self.text("#origin"), "written by a phone, begun 2026-03-01 09:30:00 UTC")
        self.assertEqual(self.text("#head").split("\n"),
                         ["seconds", "after", "application", "service", "2001", "2042"])

    def test_time_and_gaps(self):
        self.open(CALLS)
        self.assertEqual(self.browser.evaluate(
            "[...document.querySelectorAll('#shown .row')].slice(0, 6).map((row) => row.classList.contains('pause')"
            " ? row.textContent : row.children[row.children.length - 1] && [...row.querySelectorAll('.time, .gap')]"
            ".map((cell) => cell.textContent).join(' '))"),
            ["0.500 ", "0.600 +100 ms", "0.700 +100 ms", "2.50 s later", "3.200 +2.50 s", "3.300 +100 ms"])
        # With others left out, the time since the one that is shown before counts.
        self.choose("#line", "1002")
        self.assertEqual(self.browser.evaluate(
            "[...document.querySelectorAll('.pause')].map((row) => row.textContent)"),
            ["1 min 7 s later", "5.00 s later", "1.00 s later"])

    def test_picks_out(self):
        self.open(CALLS)
        everything = list(range(len(CALLS)))
        self.assertEqual(self.rows(), everything)
        for selector, value, expected in [
                ("#line", "1001", [0, 1, 2, 3, 5, 6]),
                ("#line", "1002", [4, 10, 11, 13, 14, 16]),
                ("#call", "5", [0, 1, 2, 3, 5, 6]),  # from the request that began it
                ("#call", "6", [4, 10, 11, 13, 14, 16]),
                ("#kind", "CallStateChangeEvent", [1, 3]),
                ("#kind", "HoldCall", [5, 6]),
                ("#kind", "getForwardingConfiguration", [7, 8])]:
            with self.subTest(selector, value=value):
                self.choose(selector, value)
                self.assertEqual(self.rows(), expected)
                self.choose(selector, "")
                self.assertEqual(self.rows(), everything)
        self.browser.click("#refused")
        self.assertEqual(self.rows(), [5, 6, 10, 11, 12, 13, 14, 16])
        self.choose("#line", "1001")
        self.assertEqual(self.rows(), [5, 6])
        self.choose("#kind", "AnswerCall")
        self.assertEqual(self.rows(), [])
        self.browser.click("#all")
        self.assertEqual(self.rows(), everything)

    def test_calls_that_the_list_does_not_offer_are_picked_out_all_the_same(self):
        held = [event(call, message("CallHeldEvent", ("LineID", "1001"), ("CallID", call))) for call in range(1, 3003)]
        self.open(held + held)
        offered = "document.querySelectorAll('#call option').length"
        self.assertEqual(self.browser.evaluate(offered), 3001)  # "all" is one of them
        for call in (3001, 3002, 3001):
            self.browser.press("End")
            self.browser.evaluate(f"choose({call} - 1)")
            self.browser.click("aside .links button:last-child")
            self.assertEqual(self.rows(), [call - 1, call + 3001])
            self.assertEqual(self.browser.evaluate("document.querySelector('#call').selectedOptions[0].text"), f"{call} (2)")
            self.choose("#call", "")
        self.assertEqual(self.browser.evaluate(offered), 3003)

    def test_six_far_ends_have_columns(self):
        for count, names in [(6, ["2000", "2001", "2002", "2003", "2004", "2005"]),
                             (7, ["2000", "2001", "2002", "2004", "2006", "others"])]:
            calls = [event(i, message("IncomingCallEvent", ("LineID", "1001"), ("CallID", i + 1), ("URI", f"{2000 + number}"),
                                      ("Name", "x")))
                     for i, number in enumerate([*range(count), 0, 1, 2, 4, 6][:count + (5 if count > 6 else 0)])]
            self.open(calls)
            self.assertEqual(self.text("#head").split("\n")[4:], names)

    def test_what_was_refused_has_its_colour(self):
        self.open(CALLS)
        colours = self.browser.evaluate(
            "[...document.querySelectorAll('[data-index]')].map((row) => getComputedStyle(row).backgroundColor)")
        plain = colours[0]
        self.assertEqual([i for i, colour in enumerate(colours) if colour != plain],
                         [5, 6, 10, 11, 12, 13, 14, 16])

    def test_finds(self):
        self.open(CALLS)
        self.browser.press("/")
        self.browser.type("SIP:2001@")  # stands in the text alone, not in the row; case does not count
        self.assertEqual(self.text("#matches"), "2 matches")
        self.browser.press("Enter")
        self.assertEqual((self.text("#matches"), self.text("aside .kind + *, aside p")),
                         ("1 of 2 matches", "event 2 of 17 at 0.600000 s, channel subscriber-1"))
        for key, shift, chosen in [("Enter", False, 3), ("Enter", False, 1), ("Enter", True, 3), ("Enter", True, 1)]:
            self.browser.press(key, shift)
            self.assertEqual(self.browser.evaluate("Number(document.querySelector('.chosen').dataset.index)"), chosen)
        self.browser.click("#only")
        self.assertEqual(self.rows(), [1, 3])
        self.browser.evaluate("document.querySelector('#find').select()")
        self.browser.type("held")
        self.assertEqual((self.rows(), self.text("#matches")), ([], "no match"))
        self.browser.evaluate("document.querySelector('#find').select()")
        self.browser.type("connected")  # the name of a number
        self.assertEqual(self.rows(), [3])
        self.assertEqual(self.text("mark"), "connected")
        # To an answer that is not among the matches.
        self.browser.evaluate("document.querySelector('#find').select()")
        self.browser.type("HoldCall")
        self.browser.press("Enter")
        self.browser.click(".links button:nth-child(1)")
        self.assertEqual(self.text("aside pre"), "sfiFailure")
        self.assertIn(6, self.rows())

    def test_shows_the_message_that_was_clicked(self):
        self.open(CALLS)
        self.assertFalse(self.browser.evaluate("document.querySelector('aside').checkVisibility()"))
        self.browser.click("#record5 .label")
        self.assertEqual(self.text("aside h2"), "HoldCall")
        self.assertEqual(self.fields(), [
            ["line", "the line", "1001", ""], ["callId", "the call", "5", ""],
            ["holdCallReason", "the feature that needs the hold", "hold", "1"],
            ["manual", "asked for by the user", "true", "1"]])
        self.assertEqual(self.text("aside pre"), CALLS[5]["text"])
        self.assertIn("Refused: sfiFailure", self.text("aside"))
        self.browser.click("#record8 .label")
        self.assertEqual([field[0] for field in self.fields()], ["sfiResult", "status", "uri"])
        self.assertEqual(self.text("aside pre"), CALLS[8]["text"])
        self.browser.click("#record9 .note")
        self.assertEqual(self.text("aside pre"), "advance 2s")
        self.browser.click("#record0 .label")
        self.assertIn("thread 3", self.text("aside"))
        # To the answer and back, and to the call alone.
        self.browser.click(".links button:nth-child(1)")
        self.assertEqual(self.text("aside pre"), "sfiSuccess")
        self.browser.click(".links button:nth-child(1)")
        self.assertEqual(self.text("aside pre"), CALLS[0]["text"])
        self.browser.click(".links button:nth-child(3)")
        self.assertEqual(self.rows(), [0, 1, 2, 3, 5, 6])
        self.browser.click("aside header button")
        self.assertFalse(self.browser.evaluate("document.querySelector('aside').checkVisibility()"))

    def test_keyboard_alone(self):
        self.open(CALLS)
        chosen = "Number(document.querySelector('.chosen')?.dataset.index ?? -1)"
        for key, index in [("ArrowDown", 0), ("ArrowDown", 1), ("ArrowDown", 2), ("ArrowDown", 3), ("ArrowUp", 2),
                           ("End", 16), ("ArrowDown", 16), ("Home", 0), ("ArrowUp", 0), ("PageDown", 16),
                           ("Escape", -1)]:
            self.browser.press(key)
            self.assertEqual(self.browser.evaluate(chosen), index, key)
        self.browser.press("ArrowDown")
        self.assertEqual(self.browser.evaluate("document.activeElement.getAttribute('aria-activedescendant')"),
                         self.browser.evaluate("document.querySelector('[aria-selected=true]').id"))

    def test_a_message_has_an_address(self):
        self.open(CALLS)
        self.browser.open(self.path("a.html#7"))
        self.assertEqual(self.text("aside pre"), "sfiFailure")

    def test_hostile_texts_are_texts(self):
        records = [event(1 + i, message("IncomingCallEvent", ("LineID", text), ("CallID", i + 1), ("URI", text),
                                        ("Name", text))) for i, text in enumerate(HOSTILE)]
        records += [event(20 + i, message(text)) for i, text in enumerate(HOSTILE)]
        records += [dict(time=40 + i, kind="control", text=text) for i, text in enumerate(HOSTILE)]
        records += [dict(time=60 + i, kind="exception", channel=text, text=text) for i, text in enumerate(HOSTILE)]
        self.browser.resize(1280, 3000)
        self.open(records, head=dict(HEAD, program=HOSTILE[1]))
        seen = "[document.title, document.scripts.length, document.querySelectorAll('img, b, iframe').length]"
        self.assertEqual(self.browser.evaluate(seen), ["a.trace", 2, 0])
        self.assertEqual(self.rows(), list(range(len(records))))
        self.assertIn(HOSTILE[1], self.text("#origin"))
        for i, record in enumerate(records):
            self.browser.evaluate(f"choose({i})")
            shown = self.browser.evaluate("document.querySelector('aside pre').textContent")
            self.assertEqual(re.sub(r"\\u(20..)", lambda code: chr(int(code[1], 16)), shown), record["text"])
        for text in HOSTILE:
            self.browser.evaluate(f"find.value = {json.dumps(text)}; find.dispatchEvent(new Event('input'))")
            self.browser.frame()
        self.assertEqual(self.browser.evaluate(seen), ["a.trace", 2, 0])

    def test_runs_no_other_script_and_loads_no_picture(self):
        self.open(CALLS)
        self.browser.evaluate("""(() => {
            const script = document.createElement("script");
            script.textContent = "document.title = 'broken'";
            document.body.append(script);
            const image = document.createElement("div");
            document.body.append(image);
            image.innerHTML = "<img src='a.trace' onerror=\\"document.title = 'broken'\\">";
        })()""")
        self.browser.frame()
        refused = [error for error in self.browser.errors if "Content Security Policy" in error]
        self.assertGreaterEqual(len(refused), 3)
        self.assertEqual(self.browser.evaluate("document.title"), "a.trace")
        self.browser.errors.clear()

    def test_bytes_that_are_no_text(self):
        data = message("SendCSTARequest", ("Line", "1001")).encode() + b"\x00\xff\x80Abc\xe4"
        self.open([dict(time=0, kind="request", number=1, sending="request", textHex=data.hex())])
        self.browser.press("ArrowDown")
        shown = self.browser.evaluate("[...document.querySelectorAll('aside pre')].map((pre) => pre.textContent)")
        self.assertEqual(shown[0], message("SendCSTARequest", ("Line", "1001")) + "\\x00\\xff\\x80Abc\\xe4")
        pairs = [pair for line in shown[1].split("\n") for pair in line[8:56].split()]
        self.assertEqual(bytes.fromhex("".join(pairs)), data)

    def test_a_damaged_trace_is_shown_as_far_as_it_goes(self):
        made = self.open(CALLS[:3], rest='{"time":9,"kind":"eve')
        self.assertEqual(made.returncode, 2)
        self.assertEqual(self.rows(), [0, 1, 2])
        self.assertIn("a.trace:5: cut off", self.text("#problem"))
        self.open(CALLS[:3])
        self.assertFalse(self.browser.evaluate("document.querySelector('#problem').checkVisibility()"))
        self.open([], rest="no trace\n")
        self.assertEqual(self.rows(), [])
        self.assertIn("a.trace:2: not JSON", self.text("#problem"))

    def test_prints_all_rows_and_no_tools(self):
        many = [state(i / 10, "1001", 5, 5) for i in range(300)]
        self.open(many)
        self.assertLess(len(self.rows()), 100)
        self.browser.media("print")
        self.browser.evaluate("dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(self.rows(), list(range(300)))
        self.assertFalse(self.browser.evaluate("document.querySelector('form').checkVisibility()"))
        self.assertTrue(self.browser.evaluate(
            "document.body.scrollHeight >= 300 * document.querySelector('[data-index]').offsetHeight"))
        self.browser.media()
        self.browser.evaluate("dispatchEvent(new Event('afterprint'))")
        self.assertLess(len(self.rows()), 100)
        few = len(re.findall(rb"/Type\s*/Page\b", self.printed(CALLS)))
        self.assertGreaterEqual(few, 1)
        self.assertGreater(len(re.findall(rb"/Type\s*/Page\b", self.printed(many))), few + 3)

    def printed(self, records):
        self.open(records)
        self.browser.print(self.path("a.pdf"))
        with open(self.path("a.pdf"), "rb") as file:
            return file.read()

    def test_light_and_dark_are_readable(self):
        self.open(CALLS)
        grounds = {}
        for scheme in "light", "dark":
            self.browser.media(scheme=scheme)
            names = ("ground raised chosen ink faint request event answer far refused refused-ground note"
                     " note-ground match match-ink")
            colours = self.browser.evaluate(
                f"Object.fromEntries('{names}'.split(' ').map((name) => [name,"
                " getComputedStyle(document.documentElement).getPropertyValue('--' + name)]))")
            grounds[scheme] = self.browser.evaluate("getComputedStyle(document.body).backgroundColor")
            for text, on in [(text, "ground") for text in ("ink", "faint", "request", "event", "answer", "far", "refused")] + [
                    ("ink", "raised"), ("faint", "raised"), ("request", "raised"), ("event", "raised"),
                    ("ink", "chosen"), ("faint", "chosen"), ("request", "chosen"), ("event", "chosen"),
                    ("ink", "refused-ground"), ("faint", "refused-ground"), ("refused", "refused-ground"),
                    ("note", "note-ground"), ("match-ink", "match")]:
                with self.subTest(scheme, text=text, on=on):
                    self.assertGreaterEqual(contrast(colours[text], colours[on]), 4.5)
        self.assertNotEqual(grounds["light"], grounds["dark"])

    def test_narrow_screen(self):
        self.browser.resize(360, 640)
        self.open(CALLS)
        self.browser.click("#record3 .label")
        fits = "[document.documentElement.scrollWidth, document.querySelector('aside').getBoundingClientRect()"\
               ".right].every((right) => right <= innerWidth)"
        self.assertTrue(self.browser.evaluate(fits))
        self.assertEqual(self.text("aside pre"), CALLS[3]["text"])
        seen = self.browser.evaluate("document.querySelector('.chosen').getBoundingClientRect().bottom <="
                                     " document.querySelector('aside').getBoundingClientRect().top")
        self.assertTrue(seen)

    def test_long_trace(self):
        records = []
        for i in range(LONG // 4):
            line, call = str(1001 + i % 3), i + 1
            records += [request(i, i + 1, message("HoldCall", ("Line", line), ("CallID", call), ("HoldCallReason", 1),
                                                  ("Manual", 1))),
                        state(i + 0.1, line, call, 6), event(i + 0.2, message("CallHeldEvent", ("LineID", line), ("CallID", call))),
                        answer(i + 0.3, i + 1, "sfiFailure" if i == LONG // 5 else "sfiSuccess")]
        self.write(records)
        self.phone("--ladder-from", self.path("a.trace"), "--html", self.path("a.html"))
        seconds = self.browser.open(self.path("a.html"))
        print(f"{LONG} messages, {os.path.getsize(self.path('a.html')) / 1e6:.1f} MB: open after {seconds:.2f} s",
              file=sys.stderr)
        self.assertLess(seconds, 60)  # hangs, at that
        self.assertIn(f"{LONG:,} messages", self.text("#summary"))
        self.assertLess(len(self.rows()), 100)
        self.browser.press("End")
        self.assertEqual(self.rows()[-1], LONG - 1)
        self.assertEqual(self.text("aside pre"), "sfiSuccess")
        self.browser.click("#refused")
        self.assertEqual(self.rows(), [LONG // 5 * 4, LONG // 5 * 4 + 3])


def contrast(one, other):
    def light(colour):
        parts = [int(colour[i:i + 2], 16) / 255 for i in (1, 3, 5)]
        parts = [part / 12.92 if part <= 0.04045 else ((part + 0.055) / 1.055) ** 2.4 for part in parts]
        return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2]
    high, low = sorted((light(one), light(other)), reverse=True)
    return (high + 0.05) / (low + 0.05)


if __name__ == "__main__":
    unittest.main()
