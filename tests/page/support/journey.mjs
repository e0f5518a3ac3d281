// A test with a page. A failure leaves a screenshot.
import assert from "node:assert/strict";
import { after, before, test } from "node:test";
import { LauncherPage, startBrowser, stopBrowser } from "./launcher_page.mjs";

before(startBrowser);
after(stopBrowser);

// options: those of LauncherPage.open.
export function journey(name, options, steps) {
  test(name, { timeout: 300000 }, async () => {
    let launcher;
    try {
      launcher = await LauncherPage.open(options);
      await steps(launcher);
      assert.deepEqual(launcher.problems, []);
    } catch (error) {
      if (launcher) error.message += "\nscreenshot: " + await launcher.screenshot(name).catch(String);
      throw error;
    } finally {
      await launcher?.close();
    }
  });
}
