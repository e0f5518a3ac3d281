// From the first start to the button to play, by the keyboard alone.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";

journey("a fresh install ends with JOUER, which starts the client and ends the launcher", { game: {}, reducedMotion: "no-preference" },
  async (launcher, game) => {
    const { page } = launcher;
    const focused = () => page.evaluate(() => document.activeElement.id || document.activeElement.textContent);
    const tabTo = async (target, key = "Tab") => {
      for (let i = 0; i < 40 && await focused() !== target; i += 1) await page.keyboard.press(key);
      assert.equal(await focused(), target);
      const ring = await page.evaluate(() => getComputedStyle(document.activeElement).outlineStyle);
      assert.equal(ring, "solid", target + " shows that it has the focus");
    };
    await launcher.until("told ready", () => game.start(launcher));
    assert.deepEqual(await launcher.texts("status-text", "percent-text", "version-current", "version-latest", "server-text"),
      ["Pret a jouer.", "100%", "1", "1", "En ligne"]);
    assert.equal(await page.locator("#server-led.online").count(), 1);
    const lines = await page.locator("#log-list .entry").allTextContents();
    assert.match(lines[0], /^\d\d:\d\d:\d\d ?Connexion au serveur de patch\.\.\.$/);
    assert.match(lines.at(-1), /Pret a jouer\.$/);
    assert.ok(lines.some((line) => line.includes("Archive 1/1")), "the archive was the cheaper road");
    for (const [name, text] of Object.entries(game.files)) assert.equal(game.read(name), String(text));
    for (const button of ["win-min", "win-max", "win-close"]) await tabTo(button);
    for (const [tab, shown] of [["Nouveautes", "page-news"], ["Parametres", "page-parametres"], ["Reparation", "page-check"],
      ["Assistance", "placeholder"], ["A propos", "placeholder"]]) {
      await tabTo(tab);
      await page.keyboard.press("Enter");
      assert.equal(await page.locator("#main > div:visible").getAttribute("id"), shown);
      assert.equal(await page.locator(".nav-item.active[aria-current=page]").textContent(), tab);
    }
    await tabTo("Accueil", "Shift+Tab");
    await page.keyboard.press("Enter");
    await tabTo("btn-play");
    await page.keyboard.press("Enter");
    assert.equal(await game.ended, 0);
    assert.deepEqual(launcher.actions().at(-1), "play");
    assert.deepEqual(await game.clientStarted(), ["program: " + game.place("Tolmira.exe"), "directory: " + game.place(), "argument: quantel"]);
  });
