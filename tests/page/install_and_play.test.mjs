// From the first start to the button to play.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";

const journal = (launcher) => launcher.page.locator("#log-list .entry").allTextContents();

async function playByClick(launcher, game) {
  await launcher.page.click("#btn-play");
  assert.equal(await game.ended, 0);
  assert.deepEqual(launcher.requests.map((request) => request.action), ["play"]);
  assert.equal(await game.clientStarted(), "quantel\n");
}

journey("a fresh install ends with JOUER, which starts the client and ends the launcher", { game: {} },
  async (launcher, game) => {
    const { page } = launcher;
    assert.equal(await page.isDisabled("#btn-play"), true);
    assert.equal(await launcher.text("status-text"), "Initialisation...");
    game.start(launcher);
    await launcher.waitForText("status-text", "Pret a jouer.");
    await page.locator("#btn-play:enabled").waitFor();
    assert.equal(await launcher.text("percent-text"), "100%");
    assert.equal(await launcher.text("version-current"), "1");
    assert.equal(await launcher.text("version-latest"), "1");
    assert.equal(await launcher.text("server-text"), "En ligne");
    assert.match(await page.locator("#server-led").evaluate((led) => getComputedStyle(led).backgroundImage), /led-green\.png/);
    const lines = await journal(launcher);
    assert.match(lines[0], /^\d\d:\d\d:\d\d ?Connexion au serveur de patch\.\.\.$/);
    assert.match(lines.at(-1), /Pret a jouer\.$/);
    assert.ok(lines.some((line) => line.includes("Archive 1/1")), "the archive was the cheaper road");
    for (const [name, text] of Object.entries(game.files)) assert.equal(game.read(name), String(text));
    await playByClick(launcher, game);
  });

journey("an installed game can be played while the server cannot be reached", { game: { installed: true } },
  async (launcher, game) => {
    game.setServer("http://127.0.0.1:1");
    game.start(launcher);
    await launcher.waitForText("status-text", "Hors ligne : utilisation des fichiers deja installes.");
    await launcher.page.locator("#btn-play:enabled").waitFor();
    assert.equal(await launcher.text("server-text"), "Hors ligne");
    assert.match(await launcher.page.locator("#server-led").getAttribute("class"), /offline/);
    await playByClick(launcher, game);
  });

journey("a file that cannot be fetched is named, and the next start completes the game", { game: {} },
  async (launcher, game) => {
    const name = game.named("_1.txt");
    for (const bundle of game.manifest.bundles) game.server.faults.set("/patch/" + bundle.name, "cut");
    game.server.faults.set(game.urlOf(name), "wrong");
    game.start(launcher);
    await launcher.page.locator("#log-list", { hasText: `Echec du telechargement: ${name} (contenu incorrect)` }).waitFor();
    await launcher.page.locator("#log-list", { hasText: "ses fichiers seront pris un par un." }).waitFor();
    game.server.faults.clear();
    await game.restart(launcher);
    await launcher.waitForText("status-text", "Pret a jouer.");
    assert.equal(game.read(name), game.files[name]);
  });

journey("the keyboard alone leads to every tab and starts the game", { game: { installed: true }, reducedMotion: "no-preference" },
  async (launcher, game) => {
    const { page } = launcher;
    const focused = () => page.evaluate(() => document.activeElement.id || document.activeElement.textContent);
    const tabTo = async (target, key = "Tab") => {
      for (let i = 0; i < 40 && await focused() !== target; i += 1) await page.keyboard.press(key);
      assert.equal(await focused(), target);
      const ring = await page.evaluate(() => getComputedStyle(document.activeElement).outlineStyle);
      assert.equal(ring, "solid", target + " shows that it has the focus");
    };
    game.start(launcher);
    await page.locator("#btn-play:enabled").waitFor();
    for (const button of ["win-min", "win-max", "win-close"]) await tabTo(button);
    for (const [tab, shown] of [["Nouveautes", "page-news"], ["Parametres", "page-parametres"], ["Reparation", "page-check"],
      ["Assistance", "placeholder"], ["A propos", "placeholder"]]) {
      await tabTo(tab);
      await page.keyboard.press("Enter");
      assert.equal(await page.locator("#main > section:visible").getAttribute("id"), shown);
      assert.equal(await page.locator(".nav-item.active[aria-current=page]").textContent(), tab);
    }
    await tabTo("Accueil", "Shift+Tab");
    await page.keyboard.press("Enter");
    await tabTo("btn-play");
    await page.keyboard.press("Enter");
    assert.equal(await game.ended, 0);
    assert.equal(await game.clientStarted(), "quantel\n");
  });
