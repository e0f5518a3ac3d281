// Screenshots of every page in every state, for eyes: node tests/page/gallery.mjs [DIRECTORY] [NAME...]
// Needs no engine: the messages are made up.
import { LauncherPage, nextFrame, startBrowser, stopBrowser, build } from "./support/launcher_page.mjs";
import { optionsMessage, newsMessage } from "./support/sample_messages.mjs";
import path from "node:path";

const [directory = path.join(build, "gallery"), ...only] = process.argv.slice(2);
const longName = "data/monde/continent-du-nord/citadelle/" + "salle-du-conseil-et-des-archives-".repeat(6) + "01.bin";
const status = (text) => ({ type: "status", text });
const progress = (percent, more) => ({ type: "progress", percent, downloadedBytes: 734003200 * percent, totalBytes: 73400320000,
  speedBps: 13002342, currentFile: "data/monde/ciel/nuages_042.bin", fileIndex: 1204, fileCount: 18231, ...more });
const online = { type: "server", online: true };
const verdict = { type: "check", mode: "verify", done: true, total: 18231, ok: 18226, missing: 3, corrupt: 2, bytes: 734003200,
  samples: ["data/monde/ciel/nuages_042.bin", "data/sons/foret.bin", longName] };
const updated = [online, { type: "versions", current: 42, latest: 42 }, status("Connexion au serveur de patch..."),
  status("Lecture du manifeste..."), status("A jour."), { type: "ready", canPlay: true }];

const states = {
  "home-fresh": {},
  "home-updating": { messages: [online, { type: "versions", current: 41, latest: 42 }, status("Connexion au serveur de patch..."),
    status("Telechargement des fichiers..."), progress(37)] },
  "home-ready": { messages: [...updated, progress(100, { speedBps: 0, currentFile: "" }), status("Pret a jouer.")] },
  "home-offline": { messages: [status("Serveur de patch injoignable."), { type: "server", online: false }, { type: "ready", canPlay: true }] },
  "home-failed": { messages: [online, progress(61), status("Echec du telechargement de " + longName + "."), { type: "ready", canPlay: false }] },
  "home-huge": { messages: [online, { type: "versions", current: 2147483647, latest: 2147483647 },
    ...Array.from({ length: 90 }, (_, i) => status("Verification : " + i * 500 + " / 45000 fichiers...")),
    progress(99, { downloadedBytes: 9e18, totalBytes: 9.2e18, speedBps: 9e15, currentFile: longName, fileIndex: 2147483646, fileCount: 2147483647 })] },
  "home-focus": { messages: updated, keys: ["Tab", "Tab", "Tab", "Tab", "Tab"] },
  "home-focus-play": { messages: updated, focus: "#btn-play" },
  "news-loading": { tab: "Nouveautes" },
  "news-list": { tab: "Nouveautes", messages: [newsMessage()] , focus: ".news-item.clickable" },
  "news-failed": { tab: "Nouveautes", messages: [{ type: "news", ok: false }] },
  "news-unreadable": { tab: "Nouveautes", messages: [{ type: "news", ok: true, body: "{" }] },
  "news-empty": { tab: "Nouveautes", messages: [{ type: "news", ok: true, body: '{"items":[]}' }] },
  "options": { tab: "Parametres", messages: [optionsMessage()] },
  "options-defaults": { tab: "Parametres", messages: [optionsMessage()], click: "#opt-reset", scroll: ["#opt-body", 1400] },
  "options-saved": { tab: "Parametres", messages: [optionsMessage(), { type: "optionsSaved", ok: true }], scroll: ["#opt-body", 9999] },
  "options-refused": { tab: "Parametres", messages: [optionsMessage(), { type: "optionsSaved", ok: false }], scroll: ["#opt-body", 700] },
  "options-no-ini": { tab: "Parametres", messages: [{ ...optionsMessage(), iniExists: false }], focus: ".opt-switch" },
  "options-focus": { tab: "Parametres", messages: [optionsMessage()], scroll: ["#opt-body", 850], focus: ".opt-range" },
  "check-idle": { tab: "Reparation" },
  "check-running": { tab: "Reparation", click: "#check-run", messages: [progress(43, { currentFile: longName })] },
  "check-damage": { tab: "Reparation", click: "#check-run", messages: [verdict], scroll: ["#check-body", 9999], focus: "#check-repair" },
  "check-correct": { tab: "Reparation", click: "#check-run", messages: [{ ...verdict, ok: 18231, missing: 0, corrupt: 0, samples: [], bytes: 0 }] },
  "check-error": { tab: "Reparation", click: "#check-run", messages: [{ type: "check", mode: "verify", done: true, error: "serveur injoignable" }] },
  "check-refused": { tab: "Reparation", click: "#check-run", messages: [status("Une operation est deja en cours.")] },
  "check-huge": { tab: "Reparation", click: "#check-run", messages: [{ ...verdict, total: 2147483647, ok: 2147483000, missing: 2147483600, corrupt: 47,
    bytes: 9e18, samples: Array.from({ length: 40 }, (_, i) => i + longName) }] },
  "check-repairing": { tab: "Reparation", click: "#check-run", messages: [verdict], then: "#check-repair",
    after: [{ ...verdict, mode: "repair" }, progress(20)] },
  "check-repaired": { tab: "Reparation", click: "#check-run", messages: [verdict], then: "#check-repair",
    after: [{ ...verdict, mode: "repair" }, { type: "ready", canPlay: true }] },
  "support": { tab: "Assistance" },
};

const sizes = { small: [988, 628, 1], usual: [1268, 788, 1], large: [2560, 1440, 1], hd: [1920, 1040, 1], scaled: [988, 628, 1.5], sharp: [1268, 788, 2], dense: [634, 394, 2] };

async function show(launcher, { tab, click, messages = [], then, after = [], scroll, focus, keys = [] }) {
  const { page } = launcher;
  if (tab) await launcher.open(tab);
  if (click && click !== "#opt-reset") await page.click(click);
  await launcher.send(...messages);
  if (click === "#opt-reset") await page.click(click);
  if (then) await page.click(then);
  await launcher.send(...after);
  if (scroll) await page.evaluate(([selector, top]) => { document.querySelector(selector).scrollTop = top; }, scroll);
  for (const key of keys) await page.keyboard.press(key);
  if (focus) {
    await page.keyboard.press("Tab");
    await page.locator(focus).first().focus();
  }
  await nextFrame(page);
}

await startBrowser();
for (const [size, [width, height, scale]] of Object.entries(sizes)) {
  for (const [name, state] of Object.entries(states)) {
    if (only.length > 0 && !only.includes(name) && !only.includes(size) && !only.includes(size + "-" + name)) continue;
    const launcher = await LauncherPage.open({ width, height, scale });
    await show(launcher, state);
    console.log(await launcher.screenshot(size + "-" + name, directory), launcher.problems.join("; "));
    await launcher.close();
  }
}
await stopBrowser();
