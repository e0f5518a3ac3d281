// A published game and a directory that a launcher brings up to date, with the real engine in it.
import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import { copyFileSync, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import http from "node:http";
import os from "node:os";
import path from "node:path";
import { build } from "./launcher_page.mjs";

// Enough text that archives are smaller for a new player, with names a page has to cope with.
function sampleFiles() {
  const files = { "Tolmira.exe": "#!/bin/sh\n" };
  for (let i = 0; i < 60; i += 1) files[`data/monde ${i % 4}/r\u00e9gion_${i}.txt`] = `region ${i}\n`.repeat(400 + i);
  return files;
}

function write(file, content) {
  mkdirSync(path.dirname(file), { recursive: true });
  writeFileSync(file, content, { mode: 0o755 });
}

export class Installation {
  #root = mkdtempSync(path.join(os.tmpdir(), "patcher-page-"));
  #server = http.createServer((request, response) => this.#serve(request, response)).listen(0, "127.0.0.1");
  #engine = null;
  #directory = path.join(this.#root, "jeu \u00e9 \u65e5\u672c");
  files = sampleFiles();

  static async create() {
    const installation = new Installation();
    const client = path.join(installation.#root, "client");
    for (const [name, content] of Object.entries(installation.files)) write(path.join(client, name), content);
    const out = path.join(installation.#root, "www");
    execFileSync(path.join(build, "bin/patch-publish"), ["--client", client, "--out", out, "--version", "1", "--quiet"]);
    if (!installation.#server.listening) await once(installation.#server, "listening");
    installation.write("patcher.ini", `BaseUrl=http://127.0.0.1:${installation.#server.address().port}\r\nConnections=4\r\n`);
    copyFileSync(path.join(build, "bin/patcher-stdio"), installation.#file("Patcher"));
    return installation;
  }

  #serve(request, response) {
    const file = path.join(this.#root, "www", decodeURIComponent(request.url));
    if (existsSync(file)) response.end(readFileSync(file));
    else response.writeHead(404).end();
  }

  #file(name) {
    return path.join(this.#directory, name);
  }

  read(name) {
    return readFileSync(this.#file(name), "utf8");
  }

  write(name, text) {
    write(this.#file(name), text);
  }

  erase(name) {
    rmSync(this.#file(name), { recursive: true });
  }

  // Starts the engine of the page, as a completed navigation does. `ended` is the exit code to come.
  start(launcher) {
    this.#engine = spawn(this.#file("Patcher"), [], { stdio: ["pipe", "pipe", "inherit"], cwd: "/" });
    this.#engine.stdin.on("error", () => {});
    this.ended = Promise.all([once(this.#engine, "exit"), once(this.#engine.stdout, "close")]).then(([[code]]) => code);
    launcher.onRequest = (text) => this.#engine.stdin.write(text + "\n");
    let rest = "";
    this.#engine.stdout.setEncoding("utf8").on("data", (text) => {
      const lines = (rest + text).split("\n");
      rest = lines.pop();
      for (const line of lines) launcher.sendTexts(line).catch(() => {});
    });
  }

  async remove() {
    this.#engine?.kill("SIGKILL");
    await this.ended;
    this.#server.closeAllConnections();
    this.#server.close();
    rmSync(this.#root, { recursive: true, force: true });
  }
}
