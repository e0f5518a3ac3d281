// The page by itself, driven by messages as the host sends them.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";
import { nextFrame } from "./support/launcher_page.mjs";
import { newsMessage, optionsMessage, progress, status, verdict } from "./support/sample_messages.mjs";

const markup = '<img src=x onerror="document.title=1"><b>gras</b>';
const box = (page, id) => page.locator("#" + id).evaluate((node) => {
  const { x, y, width, height } = node.getBoundingClientRect();
  return [x, y, width, height];
});

journey("progress and the window's state are shown as the host tells them, and the title bar works the window", {}, async (launcher) => {
  const { page } = launcher;
  const home = () => Promise.all(["percent-text", "bytes-text", "speed-text", "file-name", "file-count"].map((id) => launcher.text(id)));
  for (const [bytes, text] of [[0, "0.0 Mo"], [1073741823, "1024.0 Mo"], [1073741824, "1.00 Go"], [null, "-"]]) {
    await launcher.send(progress(7, { downloadedBytes: bytes, totalBytes: bytes }));
    assert.equal(await launcher.text("bytes-text"), text + " / " + text);
  }
  await launcher.send(progress(40));
  assert.deepEqual(await home(), ["40%", "0.0 Mo / 0.0 Mo", "1.0 Mo/s", "data/a.bin", "1 / 2 fichiers"]);
  assert.equal(await page.locator("#progress-track").getAttribute("aria-valuenow"), "40");
  await launcher.send(progress(100, { speedBps: 0, currentFile: "", fileIndex: 0 }));
  assert.deepEqual(await home(), ["100%", "0.0 Mo / 0.0 Mo", "", "", ""]);
  for (const canPlay of [true, false]) {
    await launcher.send({ type: "ready", canPlay }, { type: "of a later version" });
    assert.equal(await page.isEnabled("#btn-play"), canPlay);
  }
  for (const maximized of [true, false]) {
    await launcher.send({ type: "window", maximized });
    assert.equal(await page.getAttribute("#win-max", "title"), maximized ? "Restaurer" : "Agrandir");
  }
  for (const button of ["right", "middle"]) await page.locator("#drag-zone").click({ button });
  await page.locator("#drag-zone").dblclick();
  for (const id of ["win-min", "win-max"]) await page.click("#" + id);
  await launcher.until("asked windowClose", () => page.click("#win-close"));
  assert.deepEqual(launcher.actions(), ["windowDrag", "windowDrag", "windowMaximize", "windowMinimize", "windowMaximize", "windowClose"]);
});

journey("nothing that a server sends becomes markup", {}, async (launcher) => {
  const { page } = launcher;
  const item = { date: markup, tag: markup, title: markup, summary: markup, url: "https://tolmira.example/" };
  await launcher.send(status(markup), progress(1, { currentFile: markup }), newsMessage([item]),
    { type: "check", mode: "verify", done: true, total: 1, ok: 0, missing: 1, corrupt: 0, bytes: 1, samples: [markup] });
  assert.match(await page.locator("#log-list .entry").last().textContent(), /<b>gras<\/b>$/);
  for (const id of ["status-text", "file-name", "check-samples"]) assert.equal(await launcher.text(id), markup);
  const texts = await page.locator(".news-item").locator(".news-date, .tag, .news-title, .news-summary").allTextContents();
  assert.deepEqual(texts, [markup, markup.toLowerCase(), markup, markup]);
  await launcher.send({ type: "check", mode: "verify", done: true, error: markup }, newsMessage("<i>"));
  assert.equal(await launcher.text("check-state"), "Echec : " + markup);
  assert.equal(await page.locator("#main img:not(#logo), b, i").count(), 0);
  assert.equal(await page.title(), "TolmiraMMO Patcher");
});

journey("the page's own policy keeps scripts, markup and the network out", {}, async (launcher) => {
  launcher.page.removeAllListeners("console");  // the browser complains of every attempt, sooner or later
  const outcomes = await launcher.page.evaluate(() => {
    const attempts = [
      async () => { document.body.innerHTML = "<b>x</b>"; },
      async () => fetch("https://elsewhere.invalid/"),
      async () => new Promise((onload, onerror) => { Object.assign(new Image(), { onload, onerror, src: "https://elsewhere.invalid/x.png" }); }),
      async () => { document.body.append(Object.assign(document.createElement("script"), { textContent: "injected = true" })); },
    ];
    return Promise.allSettled(attempts.map((attempt) => attempt()));
  });
  assert.deepEqual(outcomes.map(({ status }) => status), Array(4).fill("rejected"));
});

journey("the journal keeps the newest 80 entries, also under a flood, and a broken message costs only itself", {}, async (launcher) => {
  const { page } = launcher;
  const journal = () => page.locator("#log-list .entry").allTextContents();
  for (let i = 1; i <= 81; i += 1) await launcher.send(status("etape " + i));
  await assert.rejects(page.evaluate(() => window.hostSends(['{"type":"status","text":"cou'])), /JSON/);
  await launcher.send({ type: "log", text: "note" });
  await nextFrame(page);
  let entries = await journal();
  assert.deepEqual([entries.length, entries[0].slice(-7), entries.at(-1).slice(-4)], [80, "etape 3", "note"]);

  const drawn = await page.evaluate(async (message) => {
    let added = 0;
    new MutationObserver((changes) => { added += changes.reduce((sum, change) => sum + change.addedNodes.length, 0); })
      .observe(document.getElementById("log-list"), { childList: true });
    for (let i = 1; i <= 100000; i += 1) {
      window.hostSends([JSON.stringify({ ...message, fileIndex: i }), JSON.stringify({ type: "log", text: "ligne " + i })]);
    }
    await new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)));
    return added;
  }, progress(50, { fileCount: 100000 }));
  assert.ok(drawn < 400, `${drawn} entries were drawn for 80 that can be seen`);
  assert.equal(await launcher.text("file-count"), "100000 / 100000 fichiers");
  entries = await journal();
  assert.deepEqual([entries.length, entries.at(-1).slice(-12)], [80, "ligne 100000"]);
  const newest = await page.locator("#log-list .entry").last().boundingBox();
  const list = await page.locator("#log-list").boundingBox();
  assert.ok(Math.abs(newest.y - list.y) < 2, "the newest entry stands in sight at the top");
});

const long = "data/" + "un-dossier-au-nom-interminable/".repeat(12) + "fichier.bin";
const huge = [{ type: "server", online: true }, { type: "versions", current: 2147483647, latest: 2147483647 }, status(long),
  progress(100, { downloadedBytes: 9e18, totalBytes: 9e18, speedBps: 9e18, currentFile: long, fileIndex: 2147483647, fileCount: 2147483647 }),
  { type: "check", mode: "verify", done: true, total: 2147483647, ok: 1, missing: 1073741824, corrupt: 1073741823, bytes: 9e18,
    samples: Array(40).fill(long) },
  optionsMessage(), newsMessage()];
const steady = ["hero", "navbar", "status-text", "progress-track", "version-current", "integrity-badge", "log-list", "btn-play",
  "server-led"];

// The least window, the usual one and a large screen, as the web view sees them; and the usual one on a display at 200 %.
for (const [width, height] of [[988, 628], [1268, 788], [2560, 1440], [634, 394]]) {
  journey(`everything fits and nothing jumps at ${width} by ${height}`, { width, height }, async (launcher) => {
    const { page } = launcher;
    const places = () => Promise.all(steady.map((id) => box(page, id)));
    const scale = Math.min(1, width / 988, height / 628);
    const near = (actual, expected, what) => assert.ok(Math.abs(actual - expected * scale) < 1, `${what}: ${actual}`);
    const before = await places();
    const sizes = [before[0][3], before[1][3], ...before[7].slice(2)];
    [200, 46, 190, 48].forEach((expected, i) => near(sizes[i], expected, "size " + i));
    near((await box(page, "win-close"))[0] + 46 * scale, width / scale, "close button's right edge");
    await launcher.send(...huge);
    await nextFrame(page);
    const rows = (all) => all.map(([, y, , h]) => [y, h]);
    assert.deepEqual(rows(await places()), rows(before));
    for (const tab of ["Accueil", "Nouveautes", "Parametres", "Reparation", "Assistance"]) {
      await launcher.open(tab);
      const outside = await page.evaluate(() => {
        const clipped = (node) => node.closest(".scroller, #log-list, .ends, #status-text, .version, .news-top, #check-phase, #check-file");
        return [...document.querySelectorAll("#main *")].filter((node) => {
          const { left, right, bottom, width } = node.getBoundingClientRect();
          return width > 0 && !clipped(node) && (left < -1 || right > innerWidth + 1 || bottom > innerHeight + 1);
        }).map((node) => node.id || node.className);
      });
      assert.deepEqual(outside, [], tab);
      const wide = await page.locator(".scroller").evaluateAll((all) => all.filter((node) => node.scrollWidth > node.clientWidth).map((node) => node.id));
      assert.deepEqual(wide, [], tab);
    }
    await launcher.open("Accueil");
    const badge = await box(page, "integrity-badge");
    const card = await box(page, "update-card");
    assert.ok(badge[1] + badge[3] < card[1] + card[3] - 30 * scale, "the card's content stays inside its frame");
  });
}

journey("everything that can be worked has a name, and only words are announced", {}, async (launcher) => {
  await launcher.send(...huge);
  const session = await launcher.context.newCDPSession(launcher.page);
  for (const tab of ["Accueil", "Nouveautes", "Parametres", "Reparation"]) {
    await launcher.open(tab);
    const { nodes } = await session.send("Accessibility.getFullAXTree");
    const worked = nodes.filter(({ role }) => ["button", "switch", "radio", "slider", "combobox", "link", "progressbar"].includes(role?.value));
    assert.ok(worked.length > 9, tab);
    assert.deepEqual(worked.filter(({ name }) => !name?.value), [], tab);
  }
  const announced = await launcher.page.locator("[role=status], [aria-live=polite]").evaluateAll((all) => all.map((node) => node.id));
  assert.deepEqual(announced, ["server-text", "status-text", "opt-state", "news-hint", "news-empty", "check-phase", "check-state"]);
});

journey("a refused repair keeps the verdict and its offer", {}, async (launcher) => {
  const { page } = launcher;
  await launcher.open("Reparation");
  const shown = () => page.locator("#check-body").innerText();
  await page.click("#check-run");
  await launcher.send({ ...verdict, bytes: 0 });
  assert.equal(await page.locator("#check-samples .more").textContent(), "... et 2 autre(s).");
  assert.equal(await launcher.text("check-repair"), "REPARER 5 FICHIER(S)");
  const before = await shown();
  for (const button of ["check-repair", "check-run"]) {
    await page.click("#" + button);
    assert.equal(await page.isDisabled("#check-run"), true);
    await launcher.send(progress(12), status("Une operation est deja en cours."));
    assert.equal(await shown(), before);
    assert.equal(await launcher.text("check-state"), "Une operation est deja en cours.");
    assert.equal(await page.locator("#check-repair:visible:enabled").count(), 1);
  }
  await page.click("#check-repair");
  await launcher.send(...Array(150).fill(progress(90)), { ...verdict, mode: "repair" });
  await nextFrame(page);
  assert.equal(await launcher.text("check-phase"), "Retelechargement...");
  assert.equal(await launcher.text("check-percent"), "0%", "what was read before is not drawn over what came after");
  await launcher.send({ type: "ready", canPlay: false });
  assert.equal(await launcher.text("check-phase"), "Reparation terminee.");
  assert.deepEqual(launcher.actions(), ["verify", "repair", "verify", "repair"]);
});

// A time zone behind UTC, where a date read as midnight UTC would be the day before.
journey("news load, fail, come unreadable, as none and as a list, which is kept", { timezone: "America/New_York" }, async (launcher) => {
  const { page } = launcher;
  const openAgain = async () => {
    await launcher.open("Accueil");
    await launcher.open("Nouveautes");
  };
  for (const [message, title] of [[{ type: "news", ok: false }, "Actualites indisponibles"],
    [{ type: "news", ok: true, body: "<html>en travaux</html>" }, "Actualites illisibles"],
    [newsMessage([]), "Aucune actualite pour le moment"]]) {
    await openAgain();
    assert.equal(await launcher.text("news-hint"), "Chargement...");
    await launcher.send(message);
    assert.equal(await launcher.text("news-empty-title"), title);
    assert.equal(await launcher.text("news-hint"), "");
  }
  const url = "https://tolmira.example/nouvelles?id=1";
  const dates = ["2026-03-07", "2026-13-07", "2026-3-7", "hier", undefined, 7];
  const items = [
    ...dates.map((date) => ({ date, title: "date" })),
    { tag: "CORRECTIF", url, title: "lien" },
    { tag: "inconnu", url: "http://tolmira.example/" },
    { tag: "", url: ["https://tolmira.example/"], summary: "" },
    null, 5, "texte", { title: { a: 1 } },
  ];
  await launcher.send(newsMessage([...items, ...Array(12).fill({ title: "Nouvelle \u00e9t\u00e9 \u65e5" })]));
  await openAgain();
  assert.equal(await launcher.text("news-hint"), "25 actualites");
  assert.equal(await page.locator(".news-item").count(), 20);
  assert.equal(await page.locator(".news-title").last().textContent(), "Nouvelle \u00e9t\u00e9 \u65e5");
  assert.equal(await page.isVisible("#news-empty"), false);
  const shown = await page.locator(".news-item .news-date").allTextContents();
  assert.deepEqual(shown.slice(0, 6), ["7 mars 2026", "2026-13-07", "2026-3-7", "hier", "", "7"]);
  assert.deepEqual(await page.locator(".tag").evaluateAll((all) => all.map((tag) => tag.className + ":" + tag.textContent)),
    ["tag correctif:correctif", "tag:inconnu"]);
  assert.equal(await page.locator(".clickable").count(), 1);
  assert.equal(await page.locator(".news-summary").count(), 0);
  await page.locator(".clickable").click();
  await page.locator(".clickable").press("Enter");
  await launcher.until("asked openUrl https://tolmira.example/", () => page.click("#news-open-site"));
  assert.deepEqual(launcher.actions(), ["getNews", "getNews", "getNews", "openUrl", "openUrl", "openUrl"]);
  assert.deepEqual(launcher.requests.slice(-3).map((request) => request.url), [url, url, "https://tolmira.example/"]);
});
