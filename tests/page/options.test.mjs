// The settings of the game: what the page shows, and what the file says afterwards.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";

const lines = (game) => game.read("ostu.ini").trim().split(/\r?\n/);
const has = (game, ...expected) => expected.forEach((line) => assert.ok(lines(game).includes(line), line));
const row = (page, label) => page.locator(".opt-row", { has: page.getByText(label, { exact: true }) });

async function openOptions(launcher, game) {
  await launcher.until("told options", () => game.start(launcher));
  await launcher.open("Parametres");
}

// The settings as they now stand in the file follow at once.
async function save(launcher) {
  await launcher.until("told options", () => launcher.page.click("#opt-apply"));
  assert.equal(await launcher.text("opt-state"), "Reglages enregistres.");
}

journey("what the player wrote by hand survives a round trip, and defaults reset the rest", { game: { installed: true } },
  async (launcher, game) => {
    const { page } = launcher;
    game.write("ostu.ini", "fpslimit 90\r\nshadowbias 0.0031\r\nbloomint 0.2\r\nfxaa 0\r\nmacmd 7 x\r\nresolution 1000 700\r\nWindowAlpha 200\r\n");
    await openOptions(launcher, game);
    assert.equal(await launcher.text("opt-state"), "");
    assert.equal(await page.locator(".opt-section").count(), 5 + 8);
    assert.equal(await page.locator(".opt-row").count(), 19 + 61);
    const chosen = (label) => row(page, label).locator("option:checked").textContent();
    assert.equal(await chosen("Images par seconde"), "90 (personnalise)");
    assert.equal(await chosen("Resolution"), "1000 x 700");
    const bias = row(page, "Decalage des ombres");
    assert.equal(await bias.locator(".opt-value").textContent(), "0.0031");
    assert.equal(await row(page, "Intensite du halo").locator(".opt-value").textContent(), "0.20");
    await bias.locator("input").focus();
    await page.keyboard.press("ArrowRight");
    assert.equal(await bias.locator(".opt-value").textContent(), "0.0032");
    await row(page, "Anticrenelage").getByRole("switch").press("Space");
    await row(page, "Ombres").getByRole("radio", { name: "Elevees" }).click();
    await page.keyboard.press("ArrowRight");
    assert.equal(await launcher.text("opt-state"), "Modifications non enregistrees.");
    await save(launcher);
    has(game, "fpslimit 90", "shadowbias 0.0032", "fxaa 1", "macmd 7 x", "resolution 1000 700", "WindowAlpha 200");
    assert.deepEqual(await row(page, "Ombres").getByRole("radio", { checked: true }).allTextContents(), ["Moyennes"]);
    assert.equal(await page.locator(".opt-row").count(), 19 + 61, "the form is built once");

    await page.click("#opt-reset");
    assert.equal(await launcher.text("opt-state"), "Modifications non enregistrees.");
    has(game, "fpslimit 90", "shadowbias 0.0032");
    await save(launcher);
    has(game, "fpslimit 0", "shadowbias 0.002", "fxaa 1", "WindowAlpha 255", "macmd 7 x", "resolution 1000 700");
    assert.match(await page.locator(".entry").last().textContent(), /Reglages graphiques enregistres \(ostu\.ini\)\.$/);
  });

journey("a game never started shows its defaults, and a refused write keeps the form", { game: { installed: true } },
  async (launcher, game) => {
    const { page } = launcher;
    await openOptions(launcher, game);
    assert.equal(await launcher.text("opt-state"), "Le jeu n'a pas encore ete lance : voici les valeurs par defaut.");
    game.write("ostu.ini/in the way", "");
    await row(page, "Plein ecran").getByRole("switch").click();
    await row(page, "Images par seconde").getByRole("combobox").selectOption("144");
    await launcher.until("told optionsSaved", () => page.click("#opt-apply"));
    assert.equal(await launcher.text("opt-state"), "Echec de l'enregistrement : ostu.ini n'a pas pu etre ecrit.");
    game.erase("ostu.ini");
    await save(launcher);
    assert.equal(lines(game).length, 80);
    has(game, "fpslimit 144", "fullscreen 0");
    assert.equal(await row(page, "Plein ecran").getByRole("switch").getAttribute("aria-checked"), "false");
  });

journey("a form filled without the file's values gets them instead of a save", { game: { installed: true } },
  async (launcher, game) => {
    const { page } = launcher;
    game.write("ostu.ini", "fpslimit 90\n".padEnd((16 << 20) + 1)); // too large to be read
    await openOptions(launcher, game);
    game.write("ostu.ini", "fpslimit 90\n");
    await launcher.until("told options", () => page.click("#opt-apply"));
    assert.equal(launcher.requests.at(-1).values.iniUnread, 1, "the page says where its values are from");
    assert.equal(await launcher.text("opt-state"), "Echec de l'enregistrement : ostu.ini n'a pas pu etre ecrit.");
    assert.equal(await row(page, "Images par seconde").locator("option:checked").textContent(), "90 (personnalise)");
    assert.equal(game.read("ostu.ini"), "fpslimit 90\n");
    await save(launcher);
    has(game, "fpslimit 90");
  });
