// Verification and repair, driven from the page.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";

const manifest = "/patch/version.json";
const tallies = async (launcher) => Promise.all(["tally-ok", "tally-missing", "tally-corrupt"].map((id) => launcher.text(id)));

async function upToDate(launcher, game) {
  await launcher.until("told ready", () => game.start(launcher));
  assert.equal(await launcher.text("status-text"), "A jour.");
  await launcher.open("Reparation");
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
  await launcher.until("told ready", () => page.click("#check-run"));
  assert.equal(await launcher.text("check-phase"), "Controle termine.");
  assert.deepEqual(await tallies(launcher), ["59", "1", "1"]);
  assert.deepEqual(await page.locator("#check-samples li").allTextContents(), [missing, damaged]);
  assert.equal(await launcher.text("check-repair"), "REPARER 2 FICHIER(S) (0.0 Mo)");
  assert.equal(await page.locator("#check-run.primary").count(), 0);

  game.server.requests = [];
  await launcher.until("told ready", () => page.click("#check-repair"));
  assert.equal(await launcher.text("check-phase"), "Reparation terminee.");
  assert.equal(await launcher.text("check-state"), "Fichiers remis en place. Relance une verification pour confirmer.");
  assert.equal(await page.isVisible("#check-repair"), false);
  for (const name of [missing, damaged]) assert.equal(game.read(name), game.files[name]);
  assert.equal(game.read("captures/mienne.png"), "capture");
  const asked = new Set(game.server.requests);
  assert.deepEqual([...asked].sort(), [manifest, game.urlOf(missing), game.urlOf(damaged)].sort());

  await launcher.until("told ready", () => page.click("#check-run"));
  assert.equal(await launcher.text("check-phase"), "Installation intacte.");
  assert.equal(await launcher.text("check-state"), "61 fichier(s) controle(s), aucun probleme.");
  assert.equal(await launcher.text("check-percent"), "100%");
  assert.equal(await page.isVisible("#check-detail"), false);
});

journey("more damage than the list shows, and a server that goes away", { game: { installed: true } }, async (launcher, game) => {
  const { page } = launcher;
  const untilReady = (key) => launcher.until("told ready", () => page.keyboard.press(key));
  await upToDate(launcher, game);
  const names = Object.keys(game.files).filter((name) => name.startsWith("data/"));
  for (const name of names.slice(0, 43)) game.erase(name);
  await page.locator("#check-run").focus();
  await untilReady("Enter");
  assert.equal(await launcher.text("check-phase"), "Controle termine.");
  assert.equal(await page.locator("#check-samples li").count(), 41);
  assert.equal(await page.locator("#check-samples .more").textContent(), "... et 3 autre(s).");
  assert.equal(await page.evaluate(() => document.activeElement.id), "check-repair", "the keyboard goes on with what is offered");
  game.server.faults.set(manifest, 503);
  await untilReady("Enter");
  assert.equal(await launcher.text("check-state"), "Echec : manifeste illisible");
  assert.equal(await launcher.text("check-phase"), "Echec.");
  assert.equal(await launcher.text("server-text"), "Hors ligne");
  assert.deepEqual(await tallies(launcher), ["18", "43", "0"], "the verdict and the offer stay");
  game.server.faults.clear();
  await launcher.until("told ready", () => page.click("#check-repair"));
  assert.equal(await launcher.text("check-phase"), "Reparation terminee.");
  for (const name of names) assert.equal(game.read(name), game.files[name]);
});

journey("a verification that the host refuses leaves the page as it was", { game: {} }, async (launcher, game) => {
  const { page } = launcher;
  const release = game.server.hold(manifest);
  await launcher.until("told status", () => game.start(launcher));
  await launcher.open("Reparation");
  for (let attempt = 0; attempt < 2; attempt += 1) {
    await launcher.until("told status", () => page.click("#check-run"));
    assert.equal(await launcher.text("check-state"), "Une operation est deja en cours.");
    assert.equal(await page.locator("#check-run.primary:enabled").count(), 1);
    assert.equal(await launcher.text("check-phase"), "Pret.");
    assert.deepEqual(await tallies(launcher), ["-", "-", "-"]);
  }
  await launcher.until("told ready", release);
  assert.equal(await launcher.text("status-text"), "Pret a jouer.");
  await launcher.until("told ready", () => page.click("#check-run"));
  assert.equal(await launcher.text("check-phase"), "Installation intacte.");
});
