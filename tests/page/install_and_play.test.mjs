// From the first start to the button to play.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";

async function playBy(launcher, game, press) {
  await launcher.page.locator("#btn-play:enabled").waitFor();
  await press();
  assert.equal(await game.ended, 0);
  assert.deepEqual(launcher.actions().at(-1), "play");
  assert.deepEqual(await game.clientStarted(), ["program: " + game.place("Tolmira.exe"), "directory: " + game.place(), "argument: quantel"]);
}

journey("a fresh install ends with JOUER, which starts the client and ends the launcher", { game: {} },
  async (launcher, game) => {
    const { page } = launcher;
    assert.equal(await page.isDisabled("#btn-play"), true);
    assert.equal(await launcher.text("status-text"), "Initialisation...");
    game.start(launcher);
    await launcher.waitForText("status-text", "Pret a jouer.");
    await page.locator("#btn-play:enabled").waitFor();
    for (const [id, text] of Object.entries({ "percent-text": "100%", "version-current": "1", "version-latest": "1", "server-text": "En ligne" })) {
      assert.equal(await launcher.text(id), text);
    }
    assert.match(await page.locator("#server-led").evaluate((led) => getComputedStyle(led).backgroundImage), /led-green\.png/);
    const lines = await page.locator("#log-list .entry").allTextContents();
    assert.match(lines[0], /^\d\d:\d\d:\d\d ?Connexion au serveur de patch\.\.\.$/);
    assert.match(lines.at(-1), /Pret a jouer\.$/);
    assert.ok(lines.some((line) => line.includes("Archive 1/1")), "the archive was the cheaper road");
    for (const [name, text] of Object.entries(game.files)) assert.equal(game.read(name), String(text));
    await playBy(launcher, game, () => page.click("#btn-play"));
  });

journey("an installed game can be played while the server cannot be reached", { game: { installed: true } },
  async (launcher, game) => {
    game.setServer("http://127.0.0.1:1");
    game.start(launcher);
    await launcher.waitForText("status-text", "Hors ligne : utilisation des fichiers deja installes.");
    assert.equal(await launcher.text("server-text"), "Hors ligne");
    assert.match(await launcher.page.locator("#server-led").getAttribute("class"), /offline/);
    await playBy(launcher, game, () => launcher.page.click("#btn-play"));
  });

journey("a file that cannot be fetched is named, and the next start completes the game", { game: {} },
  async (launcher, game) => {
    const name = game.named("_1.txt");
    for (const bundle of game.manifest.bundles) game.server.faults.set("/patch/" + bundle.name, "cut");
    game.server.faults.set(game.urlOf(name), "wrong");
    game.start(launcher);
    await launcher.waitForText("log-list", `Echec du telechargement: ${name} (contenu incorrect)`);
    await launcher.waitForText("log-list", "ses fichiers seront pris un par un.");
    game.server.faults.clear();
    await game.restart(launcher);
    await launcher.waitForText("status-text", "Pret a jouer.");
    assert.equal(game.read(name), game.files[name]);
  });

journey("news that cannot be had are asked for again, and come as the site wrote them", { game: { installed: true } },
  async (launcher, game) => {
    game.start(launcher);
    await launcher.open("Nouveautes");
    await launcher.waitForText("news-empty-title", "Actualites indisponibles");
    const items = Array(25).fill({ title: "Nouvelle \u00e9t\u00e9 \u65e5 \"\\\u{1f409}", summary: "resume\n".repeat(900) });
    game.server.content.set("/api/news.json", Buffer.from(JSON.stringify({ items })));
    await launcher.open("Accueil");
    await launcher.open("Nouveautes");
    await launcher.waitForText("news-hint", "25 actualites");
    assert.equal(await launcher.page.locator(".news-title").last().textContent(), items[0].title);
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
    await playBy(launcher, game, () => page.keyboard.press("Enter"));
  });
