// Verification and repair, driven from the page.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";

journey("damage is found and repaired, and nothing else is touched", { game: { installed: true } }, async (launcher, game) => {
  const { page } = launcher;
  const [missing, damaged] = ["_6.txt", "_7.txt"].map((end) => Object.keys(game.files).find((file) => file.endsWith(end)));
  const shows = async (...texts) => assert.deepEqual(await launcher.texts("check-phase", "check-percent", "tally-ok", "tally-missing",
    "tally-corrupt", "check-state"), texts);
  const untilReady = (button) => launcher.until("told ready", () => page.click(button));
  await launcher.until("told ready", () => game.start(launcher));
  assert.deepEqual(await launcher.texts("status-text"), ["A jour."]);
  await launcher.open("Reparation");
  game.erase(missing);
  game.write(damaged, game.files[damaged].replace("region", "REGION"));
  game.write("captures/mienne.png", "capture");
  await untilReady("#check-run");
  await shows("Controle termine.", "100%", "59", "1", "1", "Clique sur Reparer pour les remettre en place - rien d'autre ne sera touche.");
  assert.deepEqual(await page.locator("#check-samples li").allTextContents(), [missing, damaged]);
  assert.deepEqual(await page.locator(".push.primary:visible").allTextContents(), ["REPARER 2 FICHIER(S) (0.0 Mo)"]);
  game.requests = [];
  await untilReady("#check-repair");
  await shows("Reparation terminee.", "100%", "59", "1", "1", "Fichiers remis en place. Relance une verification pour confirmer.");
  for (const name of [missing, damaged]) assert.equal(game.read(name), game.files[name]);
  assert.equal(game.read("captures/mienne.png"), "capture");
  assert.deepEqual([...new Set(game.requests)].sort(), ["/patch/version.json", game.urlOf(missing), game.urlOf(damaged)].sort());
  await untilReady("#check-run");
  await shows("Installation intacte.", "100%", "61", "0", "0", "61 fichier(s) controle(s), aucun probleme.");
  assert.equal(await page.isVisible("#check-detail"), false);
  assert.deepEqual(await page.locator(".push.primary:visible:enabled").allTextContents(), ["VERIFIER LES FICHIERS"]);
});
