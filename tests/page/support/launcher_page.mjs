// The launcher's page in a real browser, with a bridge in the place of the web view's host.
import { EventEmitter, once } from "node:events";
import { existsSync, readFileSync } from "node:fs";
import { mkdir } from "node:fs/promises";
import path from "node:path";
import { fileURLToPath } from "node:url";
import { chromium } from "playwright-core";

export const root = fileURLToPath(new URL("../../../", import.meta.url));
const html = readFileSync(path.join(root, "build/linux/Patcher/generated/page/launcher.html"), "utf8");
const assetOrigin = /img-src ([^;"]+)/.exec(html)[1];
const pageUrl = "https://launcher.invalid/";

const browserArguments = ["--no-sandbox", "--disable-gpu", "--no-first-run", "--disable-background-networking",
  "--disable-component-update", "--disable-sync"];
let browser;

export async function startBrowser() {
  browser = await chromium.launch({ executablePath: "/usr/bin/chromium", args: browserArguments,
    ignoreDefaultArgs: ["--hide-scrollbars"] });
}

export async function stopBrowser() {
  await browser.close();
}

// In the page, before its own script runs.
function installBridge() {
  const listeners = [];
  window.chrome = window.chrome || {};
  window.chrome.webview = {
    postMessage: (message) => window.hostReceives(message),
    addEventListener: (type, listener) => listeners.push(listener),
  };
  window.hostSends = (texts) => {
    for (const data of texts) listeners.forEach((listener) => listener({ data }));
  };
}

// Resolves when what the page holds now has been drawn.
export function nextFrame(page) {
  return page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
}

export class LauncherPage {
  // What the page asked the host for, parsed, in order.
  requests = [];
  // Errors of the page and requests that it must not make.
  problems = [];
  #events = new EventEmitter();

  static async open({ width = 1280, height = 800, scale = 1, reducedMotion = "reduce", timezone, ...themes } = {}) {
    const launcher = new LauncherPage();
    launcher.context = await browser.newContext({ viewport: { width, height }, deviceScaleFactor: scale, reducedMotion,
      locale: "fr-FR", timezoneId: timezone, ...themes });
    await launcher.context.route("**/*", (route) => launcher.#answer(route));
    await launcher.context.exposeFunction("hostReceives", (text) => launcher.#receive(text));
    await launcher.context.addInitScript(installBridge);
    launcher.page = await launcher.context.newPage();
    launcher.page.setDefaultTimeout(120000);
    launcher.page.on("pageerror", (error) => launcher.problems.push(String(error)));
    launcher.page.on("console", (message) => {
      if (message.type() === "error") launcher.problems.push(message.text());
    });
    await launcher.page.goto(pageUrl, { waitUntil: "load" });
    return launcher;
  }

  #answer(route) {
    const url = route.request().url();
    if (url === pageUrl) return route.fulfill({ contentType: "text/html; charset=utf-8", body: html });
    const asset = path.join(root, "Patcher/patcher-assets", path.basename(url));
    if (url.startsWith(assetOrigin + "/") && existsSync(asset)) return route.fulfill({ path: asset });
    this.problems.push("request for " + url);
    return route.abort();
  }

  #receive(text) {
    const request = JSON.parse(text);
    this.requests.push(request);
    this.#events.emit(["asked", request.action, request.url].join(" ").trim());
  }

  // Hands messages to the page as the host does.
  send(...messages) {
    return this.page.evaluate((texts) => window.hostSends(texts), messages.map((message) => JSON.stringify(message)));
  }

  // Does something, and waits for what comes of it: "asked ACTION [URL]", a request of the page.
  async until(what, steps) {
    const happened = once(this.#events, what);
    await steps();
    await happened;
  }

  actions() {
    return this.requests.map((request) => request.action);
  }

  text(id) {
    return this.page.locator("#" + id).textContent();
  }

  texts(...ids) {
    return Promise.all(ids.map((id) => this.text(id)));
  }

  async open(tab) {
    await this.page.locator(".nav-item", { hasText: tab }).click();
  }

  async screenshot(name) {
    const directory = path.join(root, "build/page-screenshots");
    await mkdir(directory, { recursive: true });
    const file = path.join(directory, name.replace(/[^\w.-]+/g, "-") + ".png");
    await this.page.screenshot({ path: file });
    return file;
  }

  async close() {
    await this.context.close();
  }
}
