// The settings of the game: what the page shows, and what the file says afterwards.
import assert from "node:assert/strict";
import { journey } from "./support/journey.mjs";

journey("what the player wrote by hand survives a round trip, and defaults reset the rest", { game: { installed: true } },
  async (launcher, game) => {
    const { page } = launcher;
    const row = (label) => page.locator(".opt-row", { has: page.getByText(label, { exact: true }) });
    const shown = (label) => row(label).locator("option:checked, .opt-value, .active").textContent();
    const writes = async (...expected) => {
      await launcher.until("told options", () => page.click("#opt-apply"));
      assert.equal(await launcher.text("opt-state"), "Reglages enregistres.");
      const lines = game.read("ostu.ini").trim().split(/\r?\n/);
      for (const line of expected) assert.ok(lines.includes(line), line);
    };
    game.write("ostu.ini", "fpslimit 90\r\nshadowbias 0.0031\r\nbloomint 0.2\r\nfxaa 0\r\nmacmd 7 x\r\nresolution 1000 700\r\nWindowAlpha 200\r\n");
    await launcher.until("told options", () => game.start(launcher));
    await launcher.open("Parametres");
    assert.deepEqual(await Promise.all(["Images par seconde", "Resolution", "Decalage des ombres", "Intensite du halo"].map(shown)),
      ["90 (personnalise)", "1000 x 700", "0.0031", "0.20"]);
    await row("Decalage des ombres").locator("input").focus();
    await page.keyboard.press("ArrowRight");
    assert.equal(await shown("Decalage des ombres"), "0.0032");
    await row("Anticrenelage").getByRole("switch").press("Space");
    await row("Ombres").getByRole("radio", { name: "Elevees" }).click();
    for (const key of ["ArrowRight", "ArrowDown", "ArrowLeft"]) await page.keyboard.press(key);
    await row("Images par seconde").getByRole("combobox").selectOption("144");
    assert.equal(await launcher.text("opt-state"), "Modifications non enregistrees.");
    await writes("fpslimit 144", "shadowbias 0.0032", "fxaa 1", "macmd 7 x", "resolution 1000 700", "WindowAlpha 200");
    assert.equal(await shown("Ombres"), "Moyennes");
    assert.deepEqual([await page.locator(".opt-section").count(), await page.locator(".opt-row").count()], [5 + 8, 19 + 61]);
    await row("Resolution").getByRole("combobox").selectOption({ index: 0 });
    const [width, height] = (await shown("Resolution")).split(" x ");
    await page.click("#opt-reset");
    await writes("fpslimit 0", "shadowbias 0.002", "fxaa 1", "WindowAlpha 255", "macmd 7 x", `resolution ${width} ${height}`);
    assert.match(await page.locator(".entry").last().textContent(), /Reglages graphiques enregistres \(ostu\.ini\)\.$/);
  });

journey("a form filled without the file's values gets them instead of a save", { game: { installed: true } },
  async (launcher, game) => {
    const { page } = launcher;
    game.write("ostu.ini", "fpslimit 90\n".padEnd((16 << 20) + 1)); // too large to be read
    await launcher.until("told options", () => game.start(launcher));
    await launcher.open("Parametres");
    game.write("ostu.ini", "fpslimit 90\n");
    await launcher.until("told options", () => page.click("#opt-apply"));
    assert.equal(launcher.requests.at(-1).values.iniUnread, 1, "the page says where its values are from");
    assert.equal(await launcher.text("opt-state"), "Echec de l'enregistrement : ostu.ini n'a pas pu etre ecrit.");
    assert.equal(game.read("ostu.ini"), "fpslimit 90\n");
    await launcher.until("told options", () => page.click("#opt-apply"));
    assert.match(game.read("ostu.ini"), /^fpslimit 90\r\n/);
  });
