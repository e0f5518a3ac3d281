// Screenshots of every page in every state, for eyes: node tests/page/gallery.mjs [DIRECTORY] [NAME...]
// Needs no engine: the messages are made up.
import path from "node:path";
import { LauncherPage, nextFrame, startBrowser, stopBrowser, build } from "./support/launcher_page.mjs";
import { newsMessage, optionsMessage, progress, status, verdict } from "./support/sample_messages.mjs";

const [directory = path.join(build, "gallery"), ...only] = process.argv.slice(2);
const longName = "data/monde/continent-du-nord/citadelle/" + "salle-du-conseil-et-des-archives-".repeat(6) + "01.bin";
const online = { type: "server", online: true };
const ready = { type: "ready", canPlay: true };
const updated = [online, { type: "versions", current: 42, latest: 42 }, status("Lecture du manifeste..."), status("A jour."), ready];
const home = (...messages) => ({ messages });
const news = (...messages) => ({ tab: "Nouveautes", messages });
const settings = (more, ...messages) => ({ tab: "Parametres", messages: [optionsMessage(), ...messages], ...more });
const check = (message, more) => ({ tab: "Reparation", click: "#check-run", messages: [message], ...more });
const huge = { downloadedBytes: 9e18, totalBytes: 9.2e18, speedBps: 9e15, currentFile: longName, fileIndex: 2147483646, fileCount: 2147483647 };

// Messages come behind the click, `after` and what follows it behind them.
const states = {
  "home-fresh": home(),
  "home-updating": home(online, { type: "versions", current: 41, latest: 42 }, status("Telechargement des fichiers..."), progress(37)),
  "home-ready": home(...updated, progress(100, { speedBps: 0, currentFile: "" }), status("Pret a jouer.")),
  "home-offline": home(status("Serveur de patch injoignable."), { type: "server", online: false }, ready),
  "home-failed": home(online, progress(61), status("Echec du telechargement de " + longName + "."), { type: "ready", canPlay: false }),
  "home-huge": home(online, { type: "versions", current: 2147483647, latest: 2147483647 },
    ...Array.from({ length: 90 }, (_, i) => status("Verification : " + i * 500 + " / 45000 fichiers...")), progress(99, huge)),
  "news-loading": news(),
  "news-list": { ...news(newsMessage()), focus: ".news-item.clickable" },
  "news-failed": news({ type: "news", ok: false }),
  "news-empty": news(newsMessage([])),
  "options": settings({}),
  "options-defaults": settings({ then: "#opt-reset", scroll: ["#opt-body", 1400] }),
  "options-quality": settings({ scroll: ["#opt-body", 290], focus: ".opt-seg button" }),
  "options-refused": settings({ scroll: ["#opt-body", 850], focus: ".opt-range" }, { type: "optionsSaved", ok: false }),
  "check-idle": { tab: "Reparation" },
  "check-running": check(progress(43, { currentFile: longName })),
  "check-damage": check(verdict, { scroll: ["#check-body", 9999], focus: "#check-repair" }),
  "check-error": check({ type: "check", mode: "verify", done: true, error: "serveur injoignable" }),
  "check-huge": check({ ...verdict, total: 2147483647, ok: 2147483000, missing: 2147483600, corrupt: 47, bytes: 9e18,
    samples: Array.from({ length: 40 }, (_, i) => i + longName) }),
  "check-repairing": check(verdict, { then: "#check-repair", after: [{ ...verdict, mode: "repair" }, progress(20)] }),
  "check-repaired": check(verdict, { then: "#check-repair", after: [{ ...verdict, mode: "repair" }, ready] }),
  "support": { tab: "Assistance" },
};

const size = (width, height, scale, more) => ({ width, height, scale, ...more });
const contrast = (colorScheme) => size(988, 628, 1, { forcedColors: "active", colorScheme });
const looks = { small: size(988, 628, 1), usual: size(1268, 788, 1), wide: size(1920, 1080, 1), large: size(2560, 1440, 1),
  "scaled-125": size(1536, 864, 1.25), "scaled-150": size(1280, 720, 1.5), "scaled-175": size(1097, 617, 1.75),
  "scaled-200": size(634, 394, 2), "contrast-dark": contrast("dark"), "contrast-light": contrast("light") };

async function show(launcher, { tab, click, messages = [], then, after = [], scroll, focus }) {
  const { page } = launcher;
  if (tab) await launcher.open(tab);
  if (click) await page.click(click);
  await launcher.send(...messages);
  if (then) await page.click(then);
  await launcher.send(...after);
  if (scroll) await page.evaluate(([selector, top]) => { document.querySelector(selector).scrollTop = top; }, scroll);
  if (focus) {
    await page.keyboard.press("Tab");
    await page.locator(focus).first().focus();
  }
  await nextFrame(page);
}

await startBrowser();
for (const [look, options] of Object.entries(looks)) {
  for (const [name, state] of Object.entries(states)) {
    if (only.length > 0 && !only.some((wanted) => [name, look, look + "-" + name].includes(wanted))) continue;
    const launcher = await LauncherPage.open(options);
    await show(launcher, state);
    console.log(await launcher.screenshot(look + "-" + name, directory), launcher.problems.join("; "));
    await launcher.close();
  }
}
await stopBrowser();
