// A published game and a directory that a launcher brings up to date, with the real engine in it.
import { execFileSync } from "node:child_process";
import { once } from "node:events";
import { cpSync, copyFileSync, existsSync, mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import http from "node:http";
import os from "node:os";
import path from "node:path";
import { after } from "node:test";
import { setTimeout } from "node:timers/promises";
import { engineBuild, onWindows, startEngine } from "./engine.mjs";
import { build } from "./launcher_page.mjs";

const root = mkdtempSync(path.join(os.tmpdir(), "patcher-page-"));
const www = path.join(root, "www");
after(() => rmSync(root, { recursive: true, force: true }));
let count = 0;

// Enough text that archives are the cheaper road for a new player, with names a page has to cope with.
function sampleFiles() {
  const files = { "Tolmira.exe": readFileSync(path.join(engineBuild, "bin", onWindows ? "sample-client.exe" : "sample-client")) };
  // Names are bytes in the system's code page: under Windows only plain ones read the same from outside.
  const region = onWindows ? "region" : "r\u00e9gion";
  for (let i = 0; i < 60; i += 1) files[`data/monde ${i % 4}/${region}_${i}.txt`] = `region ${i}\n`.repeat(400 + i);
  return files;
}

function write(file, content) {
  mkdirSync(path.dirname(file), { recursive: true });
  writeFileSync(file, content, { mode: 0o755 });
}

function publish(files) {
  const client = path.join(root, "client");
  for (const [name, content] of Object.entries(files)) write(path.join(client, name), content);
  execFileSync(path.join(build, "bin/patch-publish"), ["--client", client, "--out", www, "--version", "1", "--quiet"]);
}

export class Installation {
  #engine = null;
  #server = http.createServer((request, response) => this.#serve(request, response)).listen(0, "127.0.0.1");
  files = sampleFiles();
  // Paths that the launcher asked the server for, in their order.
  requests = [];

  static async create({ installed = false }) {
    const installation = new Installation();
    if (!existsSync(www)) publish(installation.files);
    await once(installation.#server, "listening");
    count += 1;
    installation.directory = path.join(root, String(count), "jeu \u00e9 \u65e5\u672c");
    installation.write("patcher.ini", `BaseUrl=http://127.0.0.1:${installation.#server.address().port}\r\nConnections=4\r\n`);
    copyFileSync(path.join(build, "bin/patcher-stdio"), installation.#file("Patcher"));
    if (installed) {
      cpSync(path.join(root, "client"), installation.directory, { recursive: true });
      copyFileSync(path.join(www, "patch/version.json"), installation.#file("patch_manifest.json"));
    }
    return installation;
  }

  #serve(request, response) {
    this.requests.push(decodeURIComponent(request.url));
    const file = path.join(www, this.requests.at(-1));
    if (existsSync(file)) response.end(readFileSync(file));
    else response.writeHead(404).end();
  }

  #file(name) {
    return path.join(this.directory, name);
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

  // What the client tells of its start. It outlives the launcher, so it may not have told it yet.
  async clientStarted() {
    const file = this.#file("client_started.txt");
    while (!existsSync(file) || !readFileSync(file, "utf8").includes("argument: ")) await setTimeout(20);
    return readFileSync(file, "utf8").trim().split(/\r?\n/);
  }

  // How the launcher itself writes a place in the installation.
  place(name = "") {
    const place = path.join(this.directory, name);
    return onWindows ? "Z:" + place.replaceAll("/", "\\") : place;
  }

  // Request path of a file of the manifest.
  urlOf(name) {
    const { files } = JSON.parse(readFileSync(path.join(www, "patch/version.json"), "utf8"));
    return "/patch/" + files.find((file) => file.path === name).url;
  }

  // Starts the engine behind the page, as a completed navigation does.
  start(launcher) {
    this.#engine = startEngine(this.directory, launcher);
    this.ended = this.#engine.ended;
  }

  async remove() {
    this.#engine?.stop();
    await this.ended;
    this.#server.closeAllConnections();
    this.#server.close();
  }
}
