// Verification and repair, driven from the page.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";
import { nextFrame } from "./support/launcher_page.mjs";

const tallies = async (launcher) => Promise.all(["tally-ok", "tally-missing", "tally-corrupt"].map((id) => launcher.text(id)));

async function upToDate(launcher, game) {
  game.start(launcher);
  await launcher.waitForText("status-text", "A jour.");
  await launcher.page.locator("#btn-play:enabled").waitFor();
  await launcher.open("Reparation");
}

// An operation ends with `ready`, behind its verdict: a repair that started before would take it for its own end.
async function untilReady(launcher, start) {
  const ready = launcher.nextMessage("ready");
  await start();
  await ready;
}

journey("damage is found and repaired, and nothing else is touched", { game: { installed: true } }, async (launcher, game) => {
  const { page } = launcher;
  const missing = game.named("_6.txt");
  const damaged = game.named("_7.txt");
  await upToDate(launcher, game);
  game.erase(missing);
  game.write(damaged, game.files[damaged].replace("region", "REGION"));
  game.write("captures/mienne.png", "capture");
  assert.deepEqual(await tallies(launcher), ["-", "-", "-"]);
  assert.equal(await page.isVisible("#check-repair"), false);
  await untilReady(launcher, () => page.click("#check-run"));
  await launcher.waitForText("check-phase", "Controle termine.");
  assert.deepEqual(await tallies(launcher), ["59", "1", "1"]);
  assert.deepEqual(await page.locator("#check-samples li").allTextContents(), [missing, damaged]);
  assert.equal(await launcher.text("check-repair"), "REPARER 2 FICHIER(S) (0.0 Mo)");
  assert.equal(await page.locator("#check-run.primary").count(), 0);

  const askedBefore = new Map(game.server.requests);
  await page.click("#check-repair");
  await launcher.waitForText("check-phase", "Reparation terminee.");
  assert.equal(await launcher.text("check-state"), "Fichiers remis en place. Relance une verification pour confirmer.");
  assert.equal(await page.isVisible("#check-repair"), false);
  for (const name of [missing, damaged]) assert.equal(game.read(name), game.files[name]);
  assert.equal(game.read("captures/mienne.png"), "capture");
  const asked = [...game.server.requests].filter(([name, count]) => count > (askedBefore.get(name) || 0)).map(([name]) => name);
  assert.deepEqual(asked.sort(), ["/patch/version.json", game.urlOf(missing), game.urlOf(damaged)].sort());

  await page.click("#check-run");
  await launcher.waitForText("check-phase", "Installation intacte.");
  assert.equal(await launcher.text("check-state"), "61 fichier(s) controle(s), aucun probleme.");
  assert.equal(await launcher.text("check-percent"), "100%");
  assert.equal(await page.isVisible("#check-detail"), false);
});

journey("more damage than the list shows, and a server that goes away", { game: { installed: true } }, async (launcher, game) => {
  const { page } = launcher;
  await upToDate(launcher, game);
  const names = Object.keys(game.files).filter((name) => name.startsWith("data/"));
  for (const name of names.slice(0, 43)) game.erase(name);
  await page.locator("#check-run").focus();
  await untilReady(launcher, () => page.keyboard.press("Enter"));
  await launcher.waitForText("check-phase", "Controle termine.");
  assert.equal(await page.locator("#check-samples li").count(), 41);
  assert.equal(await page.locator("#check-samples .more").textContent(), "... et 3 autre(s).");
  assert.equal(await page.evaluate(() => document.activeElement.id), "check-repair", "the keyboard goes on with what is offered");
  game.server.faults.set("/patch/version.json", 503);
  await untilReady(launcher, () => page.keyboard.press("Enter"));
  await launcher.waitForText("check-state", "Echec : manifeste illisible");
  assert.equal(await launcher.text("check-phase"), "Echec.");
  assert.equal(await launcher.text("server-text"), "Hors ligne");
  assert.deepEqual(await tallies(launcher), ["18", "43", "0"], "the verdict and the offer stay");
  game.server.faults.clear();
  await page.click("#check-repair");
  await launcher.waitForText("check-phase", "Reparation terminee.");
  for (const name of names) assert.equal(game.read(name), game.files[name]);
});

journey("a verification that the host refuses leaves the page as it was", { game: {} }, async (launcher, game) => {
  const { page } = launcher;
  const release = game.server.hold("/patch/version.json");
  game.start(launcher);
  await launcher.waitForText("status-text", "Connexion au serveur de patch...");
  await launcher.open("Reparation");
  const refused = "Une operation est deja en cours.";
  for (let attempt = 0; attempt < 2; attempt += 1) {
    const asked = launcher.nextRequest("verify");
    await page.click("#check-run");
    await asked;
    await launcher.waitForText("check-state", refused);
    await page.locator("#check-run.primary:enabled").waitFor();
    assert.equal(await launcher.text("check-phase"), "Pret.");
    assert.deepEqual(await tallies(launcher), ["-", "-", "-"]);
  }
  release();
  await launcher.waitForText("status-text", "Pret a jouer.");
  await page.locator("#btn-play:enabled").waitFor({ state: "attached" });
  await page.click("#check-run");
  await launcher.waitForText("check-phase", "Installation intacte.");
});

journey("a refused repair keeps the verdict and its offer", {}, async (launcher) => {
  const { page } = launcher;
  await launcher.open("Reparation");
  const shown = () => page.locator("#check-body").innerText();
  await page.click("#check-run");
  await launcher.send({ type: "check", mode: "verify", done: true, total: 9, ok: 4, missing: 3, corrupt: 2, bytes: 0, samples: ["a", "b", "c"] });
  assert.equal(await page.locator("#check-samples .more").textContent(), "... et 2 autre(s).");
  assert.equal(await launcher.text("check-repair"), "REPARER 5 FICHIER(S)");
  const verdict = await shown();
  for (const button of ["check-repair", "check-run"]) {
    await page.click("#" + button);
    assert.equal(await page.isDisabled("#check-run"), true);
    await launcher.send({ type: "progress", percent: 12, currentFile: "data/x" },
      { type: "status", text: "Une operation est deja en cours." });
    assert.equal(await shown(), verdict);
    assert.equal(await launcher.text("check-state"), "Une operation est deja en cours.");
    assert.equal(await page.locator("#check-repair:visible:enabled").count(), 1);
  }

  await page.click("#check-repair");
  const reading = Array(150).fill({ type: "progress", percent: 90, currentFile: "data/x" });
  await launcher.send(...reading, { type: "check", mode: "repair", done: true, total: 9, ok: 4, missing: 3, corrupt: 2, bytes: 7 });
  await nextFrame(page);
  assert.equal(await launcher.text("check-phase"), "Retelechargement...");
  assert.equal(await launcher.text("check-percent"), "0%", "what was read before is not drawn over what came after");
  await launcher.send({ type: "ready", canPlay: false });
  assert.equal(await launcher.text("check-phase"), "Reparation terminee.");
  assert.deepEqual(launcher.requests.map((request) => request.action), ["verify", "repair", "verify", "repair"]);
});
