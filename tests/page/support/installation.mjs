// A published game and a directory that a launcher brings up to date, with the real engine in it.
import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import { chmodSync, copyFileSync, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, watch, writeFileSync } from "node:fs";
import os from "node:os";
import path from "node:path";
import readline from "node:readline";
import { build } from "./launcher_page.mjs";
import { PatchServer } from "./patch_server.mjs";
import { windowsClient, WindowsProgram } from "./windows_program.mjs";

const program = (name) => path.join(build, "bin", name);

// Enough text that archives are the cheaper road for a new player, with names a page has to cope with.
function sampleFiles() {
  const client = windowsClient ? readFileSync(windowsClient) : '#!/bin/sh\necho "$1" >starting && mv starting started\n';
  const files = { "Tolmira.exe": client };
  // Names are bytes in the system's code page: under Windows only plain ones read the same from outside.
  const region = windowsClient ? "region" : "r\u00e9gion";
  for (let i = 0; i < 60; i += 1) files[`data/monde ${i % 4}/${region}_${i}.txt`] = `region ${i}\n`.repeat(400 + i);
  return files;
}

export class Installation {
  #engine = null;

  static async create({ files = sampleFiles(), installed = false } = {}) {
    const installation = new Installation();
    installation.root = mkdtempSync(path.join(os.tmpdir(), "patcher-page-"));
    installation.directory = path.join(installation.root, "jeu \u00e9 \u65e5\u672c");
    mkdirSync(installation.directory);
    copyFileSync(program("patcher-stdio"), installation.file("Patcher"));
    installation.files = files;
    installation.version = 0;
    installation.publish();
    installation.server = await PatchServer.start(path.join(installation.root, "www"));
    installation.setServer(installation.server.url);
    if (installed) await installation.updateUnattended();
    return installation;
  }

  // The first file of the game whose path ends so.
  named(end) {
    return Object.keys(this.files).find((file) => file.endsWith(end));
  }

  file(name) {
    return path.join(this.directory, name);
  }

  read(name) {
    return readFileSync(this.file(name), "utf8");
  }

  write(name, text) {
    mkdirSync(path.dirname(this.file(name)), { recursive: true });
    writeFileSync(this.file(name), text);
  }

  erase(name) {
    rmSync(this.file(name), { recursive: true });
  }

  makeDirectory(name) {
    mkdirSync(this.file(name));
  }

  has(name) {
    return existsSync(this.file(name));
  }

  // What the client says when it runs. It outlives the launcher, so it may not have said it yet.
  async clientStarted() {
    await new Promise((resolve) => {
      const watcher = watch(this.directory);
      const look = () => {
        if (!this.has("started")) return;
        watcher.close();
        resolve();
      };
      watcher.on("change", look);
      look();
    });
    return this.read("started");
  }

  setServer(url) {
    this.write("patcher.ini", `BaseUrl=${url}\r\nConnections=4\r\n`);
  }

  publish() {
    this.version += 1;
    const client = path.join(this.root, "client");
    rmSync(client, { recursive: true, force: true });
    for (const [name, text] of Object.entries(this.files)) {
      mkdirSync(path.join(client, path.dirname(name)), { recursive: true });
      writeFileSync(path.join(client, name), text);
    }
    chmodSync(path.join(client, "Tolmira.exe"), 0o755);
    execFileSync(program("patch-publish"), ["--client", client, "--out", path.join(this.root, "www"), "--version",
      String(this.version), "--quiet"]);
  }

  get manifest() {
    return JSON.parse(readFileSync(path.join(this.root, "www/patch/version.json"), "utf8"));
  }

  // Request path of a file of the manifest.
  urlOf(name) {
    return "/patch/" + this.manifest.files.find((file) => file.path === name).url;
  }

  async updateUnattended() {
    const child = spawn(this.file("Patcher"), [], { stdio: ["ignore", "ignore", "inherit"] });
    const [code] = await once(child, "exit");
    if (code !== 0) throw new Error("the unattended update ended with code " + code);
  }

  // Starts the engine behind the page, as a completed navigation does.
  start(launcher) {
    if (windowsClient) return this.#startWindowsProgram(launcher);
    const child = spawn(this.file("Patcher"), [], { stdio: ["pipe", "pipe", "inherit"], cwd: "/" });
    this.#engine = child;
    this.ended = once(child, "exit").then(([code]) => code);
    child.stdin.on("error", () => {});
    launcher.onRequest = (text) => child.stdin.write(text + "\n");
    readline.createInterface({ input: child.stdout }).on("line", (line) => {
      launcher.sendTexts(line).catch(() => {});
    });
  }

  // The same with the Windows program itself in the engine's place, its page shown by the browser.
  #startWindowsProgram(launcher) {
    const program = new WindowsProgram(this.directory, launcher);
    this.#engine = program;
    this.ended = program.ended;
  }

  // The player closes the launcher and opens it again.
  async restart(launcher) {
    await this.#stop();
    await launcher.page.reload();
    this.start(launcher);
  }

  async #stop() {
    if (!this.#engine) return;
    this.#engine.kill("SIGKILL");
    await this.ended;
  }

  async remove() {
    await this.#stop();
    await this.server.stop();
    rmSync(this.root, { recursive: true, force: true });
  }
}
