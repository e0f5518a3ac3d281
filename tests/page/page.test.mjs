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

journey("progress and the window's state are shown as the host sends them, and the title bar works the window", {}, async (launcher) => {
  const { page } = launcher;
  const home = () => launcher.texts("percent-text", "bytes-text", "speed-text", "file-name", "file-count");
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
    const glyph = (await page.locator("#win-max svg").innerHTML()).match(/"[^"a-z]*"/g).join("");
    assert.deepEqual([await page.getAttribute("#win-max", "title"), glyph], maximized ?
      ["Restaurer", '"0.65""2.65""7.7""7.7""M3.0 2.0 V0.65 H10.35 V8.0 H9.0"'] : ["Agrandir", '"0.65""0.65""9.7""9.7"""']);
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
  const outcomes = await launcher.page.evaluate(() => Promise.allSettled([
    async () => { document.body.innerHTML = "<b>x</b>"; },
    async () => fetch("https://elsewhere.invalid/"),
    async () => new Promise((onload, onerror) => { Object.assign(new Image(), { onload, onerror, src: "https://elsewhere.invalid/x.png" }); }),
    async () => { document.body.append(Object.assign(document.createElement("script"), { textContent: "injected = true" })); },
  ].map((attempt) => attempt())));
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

  await page.evaluate((message) => {
    for (let i = 1; i <= 100000; i += 1) {
      window.hostSends([JSON.stringify({ ...message, fileIndex: i }), JSON.stringify({ type: "log", text: "ligne " + i })]);
    }
  }, progress(50, { fileCount: 100000 }));
  await nextFrame(page);
  assert.equal(await launcher.text("file-count"), "100000 / 100000 fichiers");
  entries = await journal();
  assert.deepEqual([entries.length, entries.at(-1).slice(-12)], [80, "ligne 100000"]);
  const list = page.locator("#log-list");
  const newest = await page.locator("#log-list .entry").last().boundingBox();
  assert.ok(Math.abs(newest.y - (await list.boundingBox()).y) < 2, "the newest entry is in sight at the top");
  await list.evaluate((node) => { node.scrollTop = 0; });
  await launcher.send({ type: "log", text: "note" });
  await nextFrame(page);
  assert.equal(await list.evaluate((node) => node.scrollTop), 0, "older entries that the player looks at stay in sight");
});

const long = "data/" + "un-dossier-au-nom-interminable/".repeat(12) + "fichier.bin";
const huge = [{ type: "server", online: true }, { type: "versions", current: 2147483647, latest: 2147483647 }, status(long),
  progress(100, { downloadedBytes: 9e18, totalBytes: 9e18, speedBps: 9e18, currentFile: long, fileIndex: 2147483647, fileCount: 2147483647 }),
  { type: "check", mode: "verify", done: true, total: 2147483647, ok: 1, missing: 1073741824, corrupt: 1073741823, bytes: 9e18,
    samples: Array(40).fill(long) },
  optionsMessage(), newsMessage()];
const steady = ["hero", "navbar", "status-text", "progress-track", "version-current", "integrity-badge", "log-list", "btn-play",
  "server-led"];

// Of the page that is shown: its column's left and right side, what can be scrolled up or down, what is outside of the window.
function layout() {
  const all = [...document.querySelectorAll("#main *")].map((node) => ({ node, ...node.getBoundingClientRect().toJSON() })).filter(({ width }) => width > 0);
  const sides = all.filter(({ node }) => node.matches(".card, .scroller > :first-child, .action-bar > .column"));
  const clipped = ".scroller *, #log-list *, .ends *, #status-text, .version *, #check-phase, #check-file";
  const names = (found) => found.map(({ node }) => node.id || node.className);
  return {
    left: Math.min(...sides.map(({ left }) => left)),
    right: Math.max(...sides.map(({ right }) => right)),
    scrolled: names(all.filter(({ node }) => node.matches(".scroller, .card-inner") && node.scrollHeight > node.clientHeight)),
    outside: names(all.filter(({ node, left, right, bottom }) => node.matches(".scroller") && node.scrollWidth > node.clientWidth
      || !node.matches(clipped) && (left < -1 || right > innerWidth + 1 || bottom > innerHeight + 1))),
  };
}

// The least window, the usual one and a large screen, as the web view sees them; the usual one at 125 % and 200 %.
for (const [width, height] of [[988, 628], [1268, 788], [2560, 1440], [1014, 630], [634, 394]]) {
  journey(`everything fits and nothing jumps at ${width} by ${height}`, { width, height }, async (launcher) => {
    const { page } = launcher;
    const rows = async () => (await Promise.all(steady.map((id) => box(page, id)))).map(([, y, , h]) => [y, h]);
    const scale = Math.min(1, width / 988, height / 628);
    const near = (actual, expected, what) => assert.ok(Math.abs(actual - expected * scale) < 2.5, `${what}: ${actual}`);
    const side = Math.max(32, (width / scale - 1320) / 2);
    const open = async (tab) => {
      await launcher.open(tab);
      const { left, right, scrolled, outside } = await page.evaluate(layout);
      assert.deepEqual(outside, [], tab);
      near(left, side, tab + " left");
      near(right, width / scale - side, tab + " right");
      return scrolled;
    };
    for (const tab of ["Nouveautes", "Reparation", "Accueil"]) assert.deepEqual(await open(tab), [], tab);
    const before = await rows();
    near(height - before[7][0] - before[7][1], 26, "room below JOUER");
    near((await box(page, "win-close"))[0] + 46 * scale, width / scale, "close button's right edge");
    await launcher.send(...huge);
    await nextFrame(page);
    assert.deepEqual(await rows(), before);
    for (const tab of ["Accueil", "Nouveautes", "Parametres", "Reparation"]) await open(tab);
    const [title, bar] = [await box(page, "check-detail-title"), await page.locator("#page-check .action-bar").boundingBox()];
    assert.ok(title[1] > 246 * scale && title[1] + title[3] < bar.y, "the list of damaged files is in sight");
  });
}

journey("a minimized window keeps what it showed", { width: 1268, height: 788 }, async (launcher) => {
  const { page } = launcher;
  await launcher.open("Parametres");
  await launcher.send(optionsMessage());
  await page.locator("#opt-body").evaluate((node) => { node.scrollTop = 900; });
  for (const [width, height] of [[160, 28], [1, 1], [1268, 788]]) {
    await page.setViewportSize({ width, height });
    await nextFrame(page);
  }
  assert.equal(await page.locator("#opt-body").evaluate((node) => node.scrollTop), 900);
});

journey("everything has its one name and its place, and only words are announced", {}, async (launcher) => {
  const { page } = launcher;
  await launcher.send(...huge);
  const session = await launcher.context.newCDPSession(page);
  const regions = { Accueil: ["MISE A JOUR DU CLIENT", "JOURNAL"], Nouveautes: ["Nouveautes"], Parametres: ["Parametres"],
    Reparation: ["Verification et reparation des fichiers"] };
  for (const tab of Object.keys(regions)) {
    await launcher.open(tab);
    const { nodes } = await session.send("Accessibility.getFullAXTree");
    const named = (...roles) => nodes.filter(({ role }) => roles.includes(role?.value)).map(({ name }) => name?.value);
    const worked = named("button", "switch", "radio", "slider", "combobox", "link", "progressbar");
    assert.ok(worked.length > 9 && worked.every(Boolean), `${tab}: ${worked}`);
    assert.deepEqual(named("region"), regions[tab]);
    const levels = nodes.filter(({ role, ignored }) => role?.value === "heading" && !ignored)
      .map(({ name, properties }) => name.value && properties.find((property) => property.name === "level").value.value);
    assert.ok(levels.every((level, i) => level && level <= (levels[i - 1] ?? 0) + 1), `${tab}: ${levels}`);
    if (tab === "Nouveautes") assert.deepEqual(named("link"), ["La citadelle du nord ouvre ses portes", "La fete des lanternes"]);
  }
  const announced = await page.locator("[role=status], [aria-live=polite]").evaluateAll((all) => all.map((node) => node.id));
  assert.deepEqual(announced, ["server-text", "status-text", "opt-state", "news-hint", "news-empty", "check-phase", "check-state"]);
  // A logo that cannot be had.
  await page.locator("#logo").evaluate((logo) => new Promise((done) => { Object.assign(logo, { onerror: done, src: "" }); }));
  assert.equal(await page.locator("#logo").evaluate((logo) => getComputedStyle(logo).opacity), "0");
});

journey("a refused request leaves the page as it was, a failed one its verdict and its offer", {}, async (launcher) => {
  const { page } = launcher;
  await launcher.open("Reparation");
  const shown = () => page.locator("#check-body").innerText();
  const shows = async (phase, state) => assert.deepEqual(await launcher.texts("check-phase", "check-state"), [phase, state]);
  const primary = async (text) => assert.deepEqual(await page.locator(".push.primary:visible:enabled").allTextContents(), [text]);
  const refuse = async (button) => {
    const before = await shown();
    await page.click("#" + button);
    assert.equal(await page.isDisabled("#check-run"), true);
    await launcher.send(progress(12), status("Une operation est deja en cours."));
    assert.equal(await shown(), before);
    assert.equal(await launcher.text("check-state"), "Une operation est deja en cours.");
  };
  await refuse("check-run");
  await primary("VERIFIER LES FICHIERS");
  await page.click("#check-run");
  await launcher.send({ type: "ready", canPlay: true });
  await shows("Lecture des fichiers...", "Operation en cours...");
  await launcher.send({ ...verdict, bytes: 0 });
  assert.equal(await page.locator("#check-samples .more").textContent(), "... et 2 autre(s).");
  for (const button of ["check-repair", "check-run"]) await refuse(button);
  await primary("REPARER 5 FICHIER(S)");
  await page.locator("#check-repair").press("Enter");
  await shows("Reparation en cours...", "Operation en cours...");
  await launcher.send({ type: "check", mode: "repair", done: true, error: "serveur injoignable" });
  await shows("Echec.", "Echec : serveur injoignable");
  assert.equal(await launcher.text("tally-missing"), "3");
  assert.equal(await page.evaluate(() => document.activeElement.id), "check-repair", "the keyboard goes on with what is offered");
  await page.click("#check-repair");
  await launcher.send(progress(90), { ...verdict, mode: "repair" });
  await shows("Retelechargement...", "5 fichier(s) a remettre en place (700.0 Mo).");
  assert.equal(await launcher.text("check-percent"), "0%");
  await launcher.send(progress(20));
  assert.deepEqual(await launcher.texts("check-percent", "check-file"), ["20%", "data/a.bin"]);
  await launcher.send({ type: "ready", canPlay: false });
  assert.equal(await launcher.text("check-phase"), "Reparation terminee.");
  await primary("VERIFIER LES FICHIERS");
  await page.click("#check-run");
  await launcher.send({ ...verdict, ok: 18231, missing: 0, corrupt: 0, bytes: 0, samples: [] });
  assert.deepEqual(await launcher.texts("check-phase", "tally-ok", "tally-missing", "tally-corrupt"), ["Installation intacte.", "18231", "0", "0"]);
  assert.equal(await page.isVisible("#check-detail"), false);
  assert.deepEqual(launcher.actions(), ["verify", "verify", "repair", "verify", "repair", "repair", "verify"]);
});

// A time zone behind UTC, where a date read as midnight UTC would be the day before.
journey("news load, fail, come unreadable, as none and as a list, which is kept", { timezone: "America/New_York" }, async (launcher) => {
  const { page } = launcher;
  const openAgain = async () => {
    await launcher.open("Accueil");
    await launcher.open("Nouveautes");
  };
  for (const [message, ...words] of [
    [{ type: "news", ok: false }, "Actualites indisponibles", "Le site n'a pas repondu. Les actualites n'empechent ni la mise a jour ni le jeu."],
    [{ type: "news", ok: true, body: "<html>en travaux</html>" }, "Actualites illisibles", "Le fichier publie par le site ne respecte pas le format attendu."],
    [newsMessage([]), "Aucune actualite pour le moment", "Reviens plus tard."]]) {
    await openAgain();
    assert.equal(await launcher.text("news-hint"), "Chargement...");
    await launcher.send(message);
    assert.deepEqual(await launcher.texts("news-empty-title", "news-empty-text", "news-hint"), [...words, ""]);
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
  await launcher.send(newsMessage(items.slice(0, 1)));
  assert.equal(await launcher.text("news-hint"), "1 actualite");
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
  assert.equal(await page.locator(".news-summary, h3:empty").count(), 0);
  await page.locator(".clickable").click();
  await page.locator(".clickable").press("Enter");
  const site = await page.getAttribute("meta[name=site-link]", "content");
  await launcher.until("asked openUrl " + site, () => page.click("#news-open-site"));
  assert.deepEqual(launcher.actions(), ["getNews", "getNews", "getNews", "openUrl", "openUrl", "openUrl"]);
  assert.deepEqual(launcher.requests.slice(-3).map((request) => request.url), [url, url, site]);
});
