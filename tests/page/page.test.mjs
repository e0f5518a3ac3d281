// The page by itself, with messages as the host sends them.
import assert from "node:assert/strict";
import { journey, read } from "./support/launcher_page.mjs";
import { newsMessage, optionsMessage, progress, status, verdict } from "./support/sample_messages.mjs";

const markup = '<img src=x onerror="document.title=1"><b>gras</b>';

journey("progress and states are shown as the host sends them, and the buttons work the window", {}, async (launcher) => {
  const { page } = launcher;
  const home = () => launcher.texts("percent-text", "bytes-text", "speed-text", "file-name", "file-count");
  for (const [bytes, text] of [[0, "0.0 Mo"], [1073741823, "1024.0 Mo"], [1073741824, "1.00 Go"], [null, "-"]]) {
    await launcher.send(progress(7, { downloadedBytes: bytes, totalBytes: bytes }));
    assert.equal(await launcher.text("bytes-text"), text + " / " + text);
  }
  await launcher.send(progress(40));
  assert.deepEqual(await home(), ["40%", "0.0 Mo / 0.0 Mo", "1.0 Mo/s", "data/a.bin", "1 / 2 fichiers"]);
  assert.equal(await page.locator("#progress-track").getAttribute("aria-valuenow"), "40");
  await launcher.send(progress(100, { speedBps: 0, currentFile: "", fileIndex: 0 }), { type: "versions", current: 6, latest: 7 });
  assert.deepEqual(await home(), ["100%", "0.0 Mo / 0.0 Mo", "", "", ""]);
  assert.deepEqual(await launcher.texts("version-current", "version-latest"), ["6", "7"]);
  for (const on of [false, true]) {
    await launcher.send({ type: "ready", canPlay: on }, { type: "of a later version" }, { type: "server", online: on });
    assert.equal(await page.isEnabled("#btn-play"), on);
    const led = await page.locator("#server-led").evaluate((node) => getComputedStyle(node).backgroundImage);
    assert.deepEqual([await launcher.text("server-text"), /\w+(?=.png)/.exec(led)[0]], on ? ["En ligne", "green"] : ["Hors ligne", "red"]);
  }
  for (const maximized of [true, false]) {
    await launcher.send({ type: "window", maximized });
    const glyph = (await page.locator("#win-max svg").innerHTML()).match(/"[^"a-z]*"/g).join("");
    assert.deepEqual([await page.getByRole("button", { name: maximized ? "Restaurer" : "Agrandir" }).getAttribute("title"), glyph], maximized ?
      ["Restaurer", '"0.65""2.65""7.7""7.7""M3.0 2.0 V0.65 H10.35 V8.0 H9.0"'] : ["Agrandir", '"0.65""0.65""9.7""9.7"""']);
  }
  assert.equal(await page.evaluate(() => window.dispatchEvent(new Event("drop", { cancelable: true }))), false);
  for (const button of ["right", "middle"]) await page.locator("#drag-zone").click({ button });
  await page.locator("#drag-zone").dblclick();
  for (const id of ["win-min", "win-max", "win-close", "btn-play"]) await page.click("#" + id);
  assert.deepEqual(await launcher.actions(), ["windowDrag", "windowDrag", "windowMaximize", "windowMinimize", "windowMaximize", "windowClose",
    "play"]);
});

journey("nothing that a server sends becomes markup, and the page's policy keeps scripts and the network out", {}, async (launcher) => {
  const { page } = launcher;
  const item = { date: markup, tag: markup, title: markup, summary: markup, url: "https://tolmira.example/" };
  await launcher.select("Reparation");
  await page.click("#check-run");
  await launcher.send(status(markup), { ...verdict, done: false, samples: [markup] }, progress(1, { currentFile: markup }), newsMessage([item]));
  assert.match(await page.locator("#log-list .entry").last().textContent(), /<b>gras<\/b>$/);
  for (const id of ["status-text", "file-name", "check-file"]) {
    assert.deepEqual([await launcher.text(id), await page.getAttribute("#" + id, "title")], [markup, markup]);
  }
  const texts = await page.locator("#check-samples li, .news-date, .tag, .news-title, .news-summary").allTextContents();
  assert.deepEqual(texts, [markup, markup.toLowerCase(), markup, markup, markup, "... et 4 autre(s)."]);
  await launcher.send({ type: "check", mode: "verify", done: true, error: markup }, newsMessage("<i>"));
  assert.equal(await launcher.text("check-state"), "Echec : " + markup);
  assert.equal(await page.locator("#main img:not(#logo), b, i").count(), 0);
  assert.equal(await page.title(), "TolmiraMMO Patcher");
  page.removeAllListeners("console");  // the browser complains of every attempt, sooner or later
  const outcomes = await page.evaluate(() => Promise.allSettled([
    async () => { document.body.innerHTML = "<b>x</b>"; },
    async () => fetch("https://elsewhere.invalid/"),
    async () => new Promise((onload, onerror) => { Object.assign(new Image(), { onload, onerror, src: "https://elsewhere.invalid/x.png" }); }),
    async () => { document.body.append(Object.assign(document.createElement("script"), { textContent: "injected = true" })); },
  ].map((attempt) => attempt())));
  assert.deepEqual(outcomes.map((outcome) => outcome.status), Array(4).fill("rejected"));
});

journey("the journal shows the newest 80 entries, and a broken message costs only itself", {}, async (launcher) => {
  const { page } = launcher;
  await assert.rejects(launcher.page.evaluate(() => window.hostSends(['{"type":"status","text":"cou'])), /JSON/);
  await page.evaluate((message) => {
    for (let i = 1; i <= 100000; i += 1) {
      window.hostSends([JSON.stringify({ ...message, fileIndex: i }), JSON.stringify({ type: "log", text: "ligne " + i })]);
    }
  }, progress(50, { fileCount: 100000 }));
  await launcher.send(status("etape"));
  assert.equal(await launcher.text("file-count"), "100000 / 100000 fichiers");
  const entries = await page.locator("#log-list .entry").allTextContents();
  assert.deepEqual([entries.length, entries[0].slice(-11), entries.at(-1).slice(-5)], [80, "ligne 99922", "etape"]);
  const list = page.locator("#log-list");
  const newest = await list.locator(".entry").last().boundingBox();
  assert.ok(Math.abs(newest.y - (await list.boundingBox()).y) < 2, "the newest entry is in sight at the top");
  await list.evaluate((node) => { node.scrollTop = 0; });
  await launcher.send({ type: "log", text: "note" });
  assert.equal(await list.evaluate((node) => node.scrollTop), 0, "older entries that the player looks at stay in sight");
});

const long = "data/" + "un-dossier-au-nom-interminable/".repeat(12) + "fichier.bin";
const huge = [{ type: "server", online: true }, { type: "versions", current: 2147483647, latest: 2147483647 }, status(long),
  progress(100, { downloadedBytes: 9e18, totalBytes: 9e18, speedBps: 9e18, currentFile: long, fileIndex: 2147483647, fileCount: 2147483647 }),
  { type: "check", mode: "verify", done: true, total: 2147483647, ok: 1, missing: 1073741824, corrupt: 1073741823, bytes: 9e18,
    samples: Array(40).fill(long) },
  optionsMessage(), newsMessage()];

// Of the page that is shown: its column's left and right side, what can be scrolled up or down, what is outside of the window, and the
// upper and lower side of what must not move.
function layout() {
  const all = [...document.querySelectorAll("#main *")].map((node) => ({ node, ...node.getBoundingClientRect().toJSON() })).filter(({ width }) => width > 0);
  const sides = all.filter(({ node }) => node.matches(".card, .scroller > :first-child, .action-bar > .column"));
  const clipped = ".scroller *, #log-list *, .ends *, #status-text, .version *, #check-phase, #check-file";
  const steady = "#hero, #navbar, #status-text, #progress-track, #version-current, #integrity-badge, #log-list, #btn-play, #server-led";
  const names = (found) => found.map(({ node }) => node.id || node.className);
  return {
    left: Math.min(...sides.map(({ left }) => left)),
    right: Math.max(...sides.map(({ right }) => right)),
    scrolled: names(all.filter(({ node }) => node.matches(".scroller, .card-inner") && node.scrollHeight > node.clientHeight)),
    outside: names(all.filter(({ node, left, right, bottom }) => node.matches(".scroller") && node.scrollWidth > node.clientWidth
      || !node.matches(clipped) && (left < -1 || right > innerWidth + 1 || bottom > innerHeight + 1))),
    steady: all.filter(({ node }) => node.matches(steady)).map(({ top, bottom }) => [top, bottom]),
  };
}

// As the web view sees them: the usual window at 200 % and 125 %, a large screen, the usual window and the least one.
const sizes = [[634, 394], [1014, 630], [2560, 1440], [1268, 788], [988, 628]];

journey("everything fits and nothing jumps in windows of all sizes", {}, async (launcher) => {
  const { page } = launcher;
  const box = (id) => page.locator("#" + id).evaluate((node) => node.getBoundingClientRect().toJSON());
  const calm = [];
  for (const messages of [[], huge]) {
    await launcher.send(...messages);
    for (const [width, height] of sizes) {
      await page.setViewportSize({ width, height });
      const scale = Math.min(1, width / 988, height / 628);
      const near = (actual, expected, what) => assert.ok(Math.abs(actual - expected * scale) < 2.5, `${width}: ${what}: ${actual}`);
      const side = Math.max(32, (width / scale - 1320) / 2);
      for (const tab of ["Parametres", "Nouveautes", "Reparation", "Accueil"]) {
        await launcher.select(tab);
        const { left, right, scrolled, outside, steady } = await page.evaluate(layout);
        assert.deepEqual(outside, [], `${width}: ${tab}`);
        near(left, side, tab + " left");
        near(right, width / scale - side, tab + " right");
        if (messages.length === 0) assert.deepEqual(scrolled, [], `${width}: ${tab}`);
        if (tab === "Accueil") calm.push(steady);
      }
      near(height - (await box("btn-play")).bottom, 26, "room below JOUER");
      near((await box("win-close")).left + 46 * scale, width / scale, "close button's right edge");
      if (messages.length === 0) continue;
      await launcher.select("Reparation");
      const { top, bottom } = await box("check-detail-title");
      const bar = await page.locator("#page-check .action-bar").boundingBox();
      assert.ok(top > 246 * scale && bottom < bar.y, `${width}: the list of damaged files is in sight`);
    }
  }
  assert.deepEqual(calm.slice(sizes.length), calm.slice(0, sizes.length));
  // A minimized window, and the size from before.
  await launcher.select("Parametres");
  await page.locator("#opt-body").evaluate((node) => { node.scrollTop = 900; });
  for (const [width, height] of [[160, 28], [1, 1], sizes.at(-1)]) {
    await page.setViewportSize({ width, height });
    await launcher.send();
  }
  assert.equal(await page.locator("#opt-body").evaluate((node) => node.scrollTop), 900);
});

journey("every control has a name, headings are in order, and only words are announced", {}, async (launcher) => {
  const { page } = launcher;
  await launcher.send(...huge);
  const session = await launcher.context.newCDPSession(page);
  const regions = { Accueil: ["MISE A JOUR DU CLIENT", "JOURNAL"], Nouveautes: ["Nouveautes"], Parametres: ["Parametres"],
    Reparation: ["Verification et reparation des fichiers"] };
  for (const tab of Object.keys(regions)) {
    await launcher.select(tab);
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

journey("a refused request changes nothing, and a failed one keeps the verdict and the offered repair", {}, async (launcher) => {
  const { page } = launcher;
  const refusal = /kRefusal\[\] = "(.+)";/.exec(read("Patcher/control/dispatch.cpp"))[1];
  await launcher.select("Reparation");
  const shown = () => page.locator("#check-body").innerText();
  const shows = async (phase, state, primary) => {
    assert.deepEqual(await launcher.texts("check-phase", "check-state"), [phase, state]);
    assert.deepEqual(await page.locator(".push.primary:visible:enabled").allTextContents(), primary);
  };
  const refuse = async (button) => {
    const before = await shown();
    await page.click("#" + button);
    assert.equal(await page.isDisabled("#check-run"), true);
    await launcher.send(progress(12), status(refusal));
    assert.equal(await shown(), before);
  };
  await refuse("check-run");
  await shows("Pret.", refusal, ["VERIFIER LES FICHIERS"]);
  await page.click("#check-run");
  await launcher.send({ type: "ready", canPlay: true });
  await shows("Lecture des fichiers...", "Operation en cours...", []);
  await launcher.send({ ...verdict, bytes: 0 });
  await shows("Controle termine.", "Clique sur Reparer pour les remettre en place - rien d'autre ne sera touche.", ["REPARER 5 FICHIER(S)"]);
  assert.equal(await page.locator("#check-samples .more").textContent(), "... et 2 autre(s).");
  for (const button of ["check-repair", "check-run"]) await refuse(button);
  await shows("Controle termine.", refusal, ["REPARER 5 FICHIER(S)"]);
  await page.locator("#check-repair").press("Enter");
  await shows("Reparation en cours...", "Operation en cours...", []);
  await launcher.send({ type: "check", mode: "repair", done: true, error: "serveur injoignable" });
  await shows("Echec.", "Echec : serveur injoignable", ["REPARER 5 FICHIER(S)"]);
  assert.equal(await launcher.text("tally-missing"), "3");
  assert.equal(await page.evaluate(() => document.activeElement.id), "check-repair", "the keyboard goes on with what is offered");
  await page.click("#check-repair");
  await launcher.send(progress(90), { ...verdict, mode: "repair" });
  await shows("Retelechargement...", "5 fichier(s) a remettre en place (700.0 Mo).", []);
  assert.equal(await launcher.text("check-percent"), "0%");
  await launcher.send(progress(20));
  assert.deepEqual(await launcher.texts("check-percent", "check-file"), ["20%", "data/a.bin"]);
  await launcher.send({ type: "ready", canPlay: false });
  await shows("Reparation terminee.", "Fichiers remis en place. Relance une verification pour confirmer.", ["VERIFIER LES FICHIERS"]);
  await page.click("#check-run");
  assert.equal(await launcher.text("tally-missing"), "-");
  await launcher.send({ ...verdict, ok: 18231, missing: 0, corrupt: 0, bytes: 0, samples: [] }, progress(55));
  await shows("Installation intacte.", "18231 fichier(s) controle(s), aucun probleme.", ["VERIFIER LES FICHIERS"]);
  assert.deepEqual(await launcher.texts("check-percent", "tally-ok", "tally-missing", "tally-corrupt"), ["100%", "18231", "0", "0"]);
  assert.equal(await page.isVisible("#check-detail"), false);
  assert.deepEqual(await launcher.actions(), ["verify", "verify", "repair", "verify", "repair", "repair", "verify"]);
});

// A time zone behind UTC, where a date read as midnight UTC would be the day before.
journey("news that fail, cannot be read, are none and are a list, which is kept", { timezoneId: "America/New_York" }, async (launcher) => {
  const { page } = launcher;
  const openAgain = async () => {
    await launcher.select("Accueil");
    await launcher.select("Nouveautes");
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
  const items = [
    ...["2026-03-07", "2026-13-07", "2026-3-7", "hier", undefined, 7].map((date) => ({ date, title: "date" })),
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
  assert.deepEqual([await page.locator(".news-item").count(), await page.isVisible("#news-empty")], [20, false]);
  assert.equal(await page.locator(".news-title").last().textContent(), "Nouvelle \u00e9t\u00e9 \u65e5");
  const shown = await page.locator(".news-date").allTextContents();
  assert.deepEqual(shown.slice(0, 6), ["7 mars 2026", "2026-13-07", "2026-3-7", "hier", "", "7"]);
  assert.deepEqual(await page.locator(".tag").evaluateAll((all) => all.map((tag) => tag.className + ":" + tag.textContent)),
    ["tag correctif:correctif", "tag:inconnu"]);
  assert.deepEqual([await page.locator(".clickable").count(), await page.locator(".news-summary, h3:empty").count()], [1, 0]);
  await page.locator(".clickable").click();
  for (const key of ["x", "Enter", "Enter"]) await page.keyboard.down(key);
  await page.click("#news-open-site");
  const requests = await launcher.requests();
  assert.deepEqual(requests.map((request) => request.action), ["getNews", "getNews", "getNews", "openUrl", "openUrl", "openUrl"]);
  assert.deepEqual(requests.slice(-3).map((request) => request.url), [url, url, await page.getAttribute("meta[name=site-link]", "content")]);
});
