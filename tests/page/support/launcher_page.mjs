// Tests with the launcher's page in a real browser, with a bridge in the place of the web view's host.
import assert from "node:assert/strict";
import { existsSync, readFileSync } from "node:fs";
import path from "node:path";
import { after, before, test } from "node:test";
import { fileURLToPath } from "node:url";
import { chromium } from "playwright-core";

const root = fileURLToPath(new URL("../../../", import.meta.url));
export const read = (file) => readFileSync(path.join(root, file), "utf8");
const html = read("build/linux/Patcher/generated/page/launcher.html");
const assetOrigin = /img-src ([^;"]+)/.exec(html)[1];
const pageUrl = "https://launcher.invalid/";
let browser;

before(async () => {
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: ["--disable-gpu"],
    ignoreDefaultArgs: ["--hide-scrollbars"] });
});
after(() => browser.close());

// In the page, before its own script runs.
function installBridge() {
  const listeners = [];
  window.hostReceived = [];
  window.chrome = window.chrome || {};
  window.chrome.webview = {
    postMessage: (text) => window.hostReceived.push(JSON.parse(text)),
    addEventListener: (type, listener) => listeners.push(listener),
  };
  window.hostSends = (texts) => {
    for (const data of texts) listeners.forEach((listener) => listener({ data }));
  };
}

class LauncherPage {
  // Errors of the page and requests that it must not make.
  problems = [];

  async open(options) {
    this.context = await browser.newContext({ viewport: { width: 1280, height: 800 }, reducedMotion: "reduce", locale: "fr-FR",
      ...options });
    await this.context.route("**/*", (route) => this.#answer(route));
    await this.context.addInitScript(installBridge);
    this.page = await this.context.newPage();
    this.page.setDefaultTimeout(120000);
    this.page.on("pageerror", (error) => this.problems.push(String(error)));
    this.page.on("console", (message) => {
      if (message.type() === "error") this.problems.push(message.text());
    });
    await this.page.goto(pageUrl, { waitUntil: "load" });
  }

  #answer(route) {
    const url = route.request().url();
    if (url === pageUrl) return route.fulfill({ contentType: "text/html; charset=utf-8", body: html });
    const asset = path.join(root, "Patcher/patcher-assets", path.basename(url));
    if (url.startsWith(assetOrigin + "/") && existsSync(asset)) return route.fulfill({ path: asset });
    this.problems.push("request for " + url);
    return route.abort();
  }

  // Hands messages to the page as the host does. Returns when what they change is drawn.
  send(...messages) {
    return this.page.evaluate((texts) => {
      window.hostSends(texts);
      return new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)));
    }, messages.map((message) => JSON.stringify(message)));
  }

  // What the page has asked the host for, in order.
  requests() {
    return this.page.evaluate(() => window.hostReceived);
  }

  async actions() {
    return (await this.requests()).map((request) => request.action);
  }

  text(id) {
    return this.page.locator("#" + id).textContent();
  }

  texts(...ids) {
    return Promise.all(ids.map((id) => this.text(id)));
  }

  select(tab) {
    return this.page.locator(".nav-item", { hasText: tab }).click();
  }
}

// A test with a page. A failure leaves a screenshot. Options: those of the browser's context.
export function journey(name, options, steps) {
  test(name, { timeout: 300000 }, async () => {
    const launcher = new LauncherPage();
    try {
      await launcher.open(options);
      await steps(launcher);
      assert.deepEqual(launcher.problems, []);
    } catch (error) {
      const file = path.join(root, "build/page-screenshots", name.replace(/[^\w.-]+/g, "-") + ".png");
      await launcher.page?.screenshot({ path: file }).catch(() => {});
      error.message += "\nscreenshot: " + file;
      throw error;
    } finally {
      await launcher.context?.close();
    }
  });
}
