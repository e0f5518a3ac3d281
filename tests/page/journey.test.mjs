// One journey with the real engine: install by the keyboard, settings, damage and repair, play.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";

journey("from the first start to the game", { game: {}, reducedMotion: "no-preference" }, async (launcher, game) => {
  const { page } = launcher;
  const focused = () => page.evaluate(() => document.activeElement.id || document.activeElement.textContent);
  const tabTo = async (target, key = "Tab") => {
    for (let i = 0; i < 40 && await focused() !== target; i += 1) await page.keyboard.press(key);
    assert.equal(await focused(), target);
    assert.equal(await page.evaluate(() => getComputedStyle(document.activeElement).outlineStyle), "solid", target + " shows its focus");
  };
  game.write("ostu.ini", "fpslimit 90\r\nshadowbias 0.0031\r\nfxaa 0\r\nmacmd 7 x\r\nresolution 1000 700\r\n");
  await launcher.until("told ready", () => game.start(launcher));
  assert.deepEqual(await launcher.texts("status-text", "percent-text", "version-current", "version-latest", "server-text"),
    ["Pret a jouer.", "100%", "1", "1", "En ligne"]);
  const lines = await page.locator("#log-list .entry").allTextContents();
  assert.match(lines[0], /^\d\d:\d\d:\d\d ?Connexion au serveur de patch\.\.\.$/);
  for (const [name, text] of Object.entries(game.files)) assert.equal(game.read(name), String(text));

  for (const [tab, shown] of [["Nouveautes", "page-news"], ["Assistance", "placeholder"], ["Parametres", "page-parametres"]]) {
    await tabTo(tab, shown === "page-parametres" ? "Shift+Tab" : "Tab");
    await page.keyboard.press("Enter");
    assert.equal(await page.locator("#main > div:visible").getAttribute("id"), shown);
    assert.equal(await page.locator(".nav-item.active[aria-current=page]").textContent(), tab);
  }
  const row = (label) => page.locator(".opt-row", { has: page.getByText(label, { exact: true }) });
  const shown = (label) => row(label).locator("option:checked, .opt-value, .active").textContent();
  const writes = async (...expected) => {
    await launcher.until("told options", () => page.click("#opt-apply"));
    assert.equal(await launcher.text("opt-state"), "Reglages enregistres.");
    for (const line of expected) assert.ok(game.read("ostu.ini").split(/\r?\n/).includes(line), line);
  };
  assert.deepEqual(await Promise.all(["Images par seconde", "Resolution", "Decalage des ombres", "Intensite du halo"].map(shown)),
    ["90 (personnalise)", "1000 x 700", "0.0031", "0.20"]);
  await row("Decalage des ombres").locator("input").focus();
  await page.keyboard.press("ArrowRight");
  assert.equal(await shown("Decalage des ombres"), "0.0032");
  await row("Anticrenelage").getByRole("switch").press("Space");
  await row("Ombres").getByRole("radio", { name: "Elevees" }).click();
  for (const key of ["ArrowRight", "ArrowDown", "ArrowLeft"]) await page.keyboard.press(key);
  await row("Images par seconde").getByRole("combobox").selectOption("144");
  await writes("fpslimit 144", "shadowbias 0.0032", "fxaa 1", "macmd 7 x", "resolution 1000 700");
  assert.equal(await shown("Ombres"), "Moyennes");
  assert.deepEqual([await page.locator(".opt-section").count(), await page.locator(".opt-row").count()], [5 + 8, 19 + 61]);
  await page.click("#opt-reset");
  await writes("fpslimit 0", "shadowbias 0.002", "fxaa 1", "WindowAlpha 255", "macmd 7 x");

  await launcher.open("Reparation");
  const [missing, damaged] = ["_6.txt", "_7.txt"].map((end) => Object.keys(game.files).find((file) => file.endsWith(end)));
  game.erase(missing);
  game.write(damaged, "damaged");
  await launcher.until("told ready", () => page.click("#check-run"));
  const tally = () => launcher.texts("check-phase", "tally-ok", "tally-missing", "tally-corrupt");
  assert.deepEqual(await tally(), ["Controle termine.", "59", "1", "1"]);
  assert.deepEqual(await page.locator("#check-samples li").allTextContents(), [missing, damaged]);
  assert.deepEqual(await page.locator(".push.primary:visible").allTextContents(), ["REPARER 2 FICHIER(S) (0.0 Mo)"]);
  await launcher.until("told ready", () => page.click("#check-repair"));
  assert.deepEqual(await tally(), ["Reparation terminee.", "59", "1", "1"]);
  await launcher.until("told ready", () => page.click("#check-run"));
  assert.deepEqual(await tally(), ["Installation intacte.", "61", "0", "0"]);
  assert.equal(await page.isVisible("#check-detail"), false);
  await launcher.open("Accueil");
  await page.click("#btn-play");
  assert.equal(await game.ended, 0);
});
