// The page by itself, driven by messages as the host sends them.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";
import { nextFrame } from "./support/launcher_page.mjs";
import { newsMessage, optionsMessage } from "./support/sample_messages.mjs";

const markup = '<img src=x onerror="document.title=1"><b>gras</b>';
const status = (text) => ({ type: "status", text });
const progress = (percent, more) => ({ type: "progress", percent, downloadedBytes: 5, totalBytes: 10, speedBps: 1048576,
  currentFile: "data/a.bin", fileIndex: 1, fileCount: 2, ...more });
const box = (page, id) => page.locator("#" + id).evaluate((node) => {
  const { x, y, width, height } = node.getBoundingClientRect();
  return [x, y, width, height];
});

journey("progress, versions and the window's state are shown as the host tells them", {}, async (launcher) => {
  const { page } = launcher;
  const home = () => Promise.all(["percent-text", "bytes-text", "speed-text", "file-name", "file-count"].map((id) => launcher.text(id)));
  const sizes = [[0, "0.0 Mo"], [1073741823, "1024.0 Mo"], [1073741824, "1.00 Go"], [null, "-"]];
  for (const [bytes, text] of sizes) {
    await launcher.send(progress(7, { downloadedBytes: bytes, totalBytes: bytes }));
    assert.equal(await launcher.text("bytes-text"), text + " / " + text);
  }
  await launcher.send(progress(40));
  assert.deepEqual(await home(), ["40%", "0.0 Mo / 0.0 Mo", "1.0 Mo/s", "data/a.bin", "1 / 2 fichiers"]);
  assert.equal(await page.locator("#progress-track").getAttribute("aria-valuenow"), "40");
  await launcher.send(progress(100, { speedBps: 0, currentFile: "", fileIndex: 0 }));
  assert.deepEqual(await home(), ["100%", "0.0 Mo / 0.0 Mo", "", "", ""]);

  await launcher.send({ type: "window", maximized: true });
  assert.equal(await page.getAttribute("#win-max", "title"), "Restaurer");
  await launcher.send({ type: "window", maximized: false });
  assert.equal(await page.getAttribute("#win-max", "title"), "Agrandir");
  await launcher.send({ type: "ready", canPlay: true });
  assert.equal(await page.isEnabled("#btn-play"), true);
  await launcher.send({ type: "ready", canPlay: false }, { type: "of a later version" });
  assert.equal(await page.isEnabled("#btn-play"), false);
});

journey("the title bar moves, minimizes, maximizes and closes the window", {}, async (launcher) => {
  const { page } = launcher;
  await page.locator("#drag-zone").click({ button: "right" });
  await page.locator("#drag-zone").click({ button: "middle" });
  await page.locator("#drag-zone").dblclick();
  for (const id of ["win-min", "win-max", "win-close"]) await page.click("#" + id);
  assert.deepEqual(launcher.requests.map((request) => request.action),
    ["windowDrag", "windowDrag", "windowMaximize", "windowMinimize", "windowMaximize", "windowClose"]);
});

journey("the journal keeps the newest 80 entries, and a broken message costs only itself", {}, async (launcher) => {
  const { page } = launcher;
  for (let i = 1; i <= 81; i += 1) await launcher.send(status("etape " + i));
  await assert.rejects(launcher.sendTexts('{"type":"status","text":"cou'), /JSON/);
  launcher.problems.length = 0;
  await launcher.page.evaluate(() => window.hostSends(['{"type":"log","text":"note"}']));
  await nextFrame(page);
  const entries = await page.locator("#log-list .entry").allTextContents();
  assert.equal(entries.length, 80);
  assert.match(entries[0], /etape 3$/);
  assert.match(entries.at(-1), /note$/);
  const newest = await page.locator("#log-list .entry").last().boundingBox();
  const list = await page.locator("#log-list").boundingBox();
  assert.ok(Math.abs(newest.y - list.y) < 2, "the newest entry stands in sight at the top");
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
  const { page } = launcher;
  const outcome = await page.evaluate(async () => {
    const refused = async (action) => {
      try {
        await action();
        return false;
      } catch {
        return true;
      }
    };
    const script = () => {
      const node = document.createElement("script");
      node.textContent = "window.injected = true";
      document.body.append(node);
    };
    const image = () => new Promise((resolve, reject) => {
      Object.assign(new Image(), { onload: resolve, onerror: reject, src: "https://elsewhere.invalid/x.png" });
    });
    return {
      markup: await refused(() => { document.body.innerHTML = "<b>x</b>"; }),
      network: await refused(() => fetch("https://elsewhere.invalid/")),
      image: await refused(image),
      script: await refused(script) || window.injected === undefined,
    };
  });
  assert.deepEqual(outcome, { markup: true, network: true, image: true, script: true });
  assert.equal(launcher.problems.some((problem) => problem.startsWith("request for")), false);
  launcher.problems.length = 0;
});

journey("a flood of messages neither freezes the page nor loses its end", {}, async (launcher) => {
  const { page } = launcher;
  const drawn = await page.evaluate(async () => {
    let added = 0;
    new MutationObserver((changes) => { added += changes.reduce((sum, change) => sum + change.addedNodes.length, 0); })
      .observe(document.getElementById("log-list"), { childList: true });
    const numbers = { type: "progress", downloadedBytes: 1, totalBytes: 2, speedBps: 0, fileCount: 100000 };
    for (let i = 1; i <= 100000; i += 1) {
      window.hostSends([JSON.stringify({ ...numbers, percent: i % 100, currentFile: "f" + i, fileIndex: i }),
        JSON.stringify({ type: "log", text: "ligne " + i })]);
    }
    await new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)));
    return added;
  });
  assert.ok(drawn < 400, `${drawn} entries were drawn for 80 that can be seen`);
  assert.equal(await launcher.text("file-count"), "100000 / 100000 fichiers");
  assert.match(await page.locator(".entry").last().textContent(), /ligne 100000$/);
  assert.equal(await page.locator(".entry").count(), 80);
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
    near(before[0][3], 200, "hero");
    near(before[1][3], 46, "navbar");
    near(before[7][2], 190, "play button's width");
    near(before[7][3], 48, "play button's height");
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
