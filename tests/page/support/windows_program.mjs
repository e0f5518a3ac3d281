// The Windows program under Wine, whose web view is the browser: its loader is the stand-in that passes on what the
// program tells its page and what the page asks. PAGE_TEST_WINDOWS names the folder of its build.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { copyFileSync, readFileSync } from "node:fs";
import { once } from "node:events";
import net from "node:net";
import path from "node:path";
import readline from "node:readline";
import { build } from "./launcher_page.mjs";

const windowsBuild = process.env.PAGE_TEST_WINDOWS && path.resolve(process.env.PAGE_TEST_WINDOWS);

// A game client that Windows starts; nothing if the native program is tested.
export const windowsClient = windowsBuild && path.join(windowsBuild, "bin/started_client.exe");

const escapes = { "\\": "\\\\", "\t": "\\t", "\n": "\\n", "\r": "\\r" };
const plain = { t: "\t", n: "\n", r: "\r", "\\": "\\" };
const escape = (field) => field.replace(/[\\\t\n\r]/g, (c) => escapes[c]);
const unescape = (field) => field.replace(/\\(.)/g, (_, c) => plain[c]);

export class WindowsProgram {
  #connection = null;
  #unsent = "";

  constructor(directory, launcher) {
    for (const file of ["bin/Patcher.exe", "web_view_stand_in/WebView2Loader.dll"]) {
      copyFileSync(path.join(windowsBuild, file), path.join(directory, path.basename(file)));
    }
    launcher.onRequest = (text) => this.#tell("send", text);
    this.ended = this.#run(directory, launcher);
  }

  kill(signal) {
    this.process?.kill(signal);
  }

  async #run(directory, launcher) {
    const server = net.createServer().listen(0, "127.0.0.1");
    await once(server, "listening");
    server.once("connection", (connection) => this.#connect(connection, launcher));
    this.process = spawn("wine", [path.join(directory, "Patcher.exe")], {
      cwd: "/",
      stdio: "ignore",
      env: { ...process.env, WEB_VIEW_STAND_IN_PORT: String(server.address().port) },
    });
    const [code] = await once(this.process, "exit");
    server.close();
    return code;
  }

  #connect(connection, launcher) {
    this.#connection = connection;
    connection.on("error", () => {});
    readline.createInterface({ input: connection }).on("line", (line) => {
      const [verb, ...fields] = line.split("\t").map(unescape);
      if (verb === "message") launcher.sendTexts(fields[0]).catch(() => {});
      if (verb === "navigate") this.#pageLoaded(fields[0]);
    });
  }

  // The browser shows this page already.
  #pageLoaded(page) {
    assert.equal(page, readFileSync(path.join(build, "Patcher/generated/page/launcher.html"), "utf8"));
    this.#connection.write("complete\n" + this.#unsent);
    this.#unsent = null;
  }

  // What the page asks while the program starts waits until it has the page.
  #tell(...fields) {
    const line = fields.map(escape).join("\t") + "\n";
    if (this.#unsent === null) this.#connection.write(line);
    else this.#unsent += line;
  }
}
