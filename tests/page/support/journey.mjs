// A test with a page, and an installation if it asks for one. A failure leaves a screenshot.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { Installation } from "./installation.mjs";
import { LauncherPage, startBrowser, stopBrowser } from "./launcher_page.mjs";

before(startBrowser);
after(stopBrowser);

// options: those of LauncherPage.open, and `game` for an installation.
export function journey(name, { game, ...pageOptions }, steps) {
  test(name, { timeout: 300000 }, async () => {
    const installation = game ? await Installation.create() : null;
    let launcher;
    try {
      launcher = await LauncherPage.open(pageOptions);
      await steps(launcher, installation);
      assert.deepEqual(launcher.problems, []);
    } catch (error) {
      if (launcher) error.message += "\nscreenshot: " + await launcher.screenshot(name).catch(String);
      throw error;
    } finally {
      await launcher?.close();
      await installation?.remove();
    }
  });
}
