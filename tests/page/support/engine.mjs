// The engine behind the page: patcher-stdio or, if PAGE_TEST_WINDOWS names the folder of its build, the Windows program
// under Wine. The loader of its web view is the stand-in that passes on what the program tells its page and what the
// page asks. Each start gives { ended, stop }: the exit code to come, and how to end it as a power cut would.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { copyFileSync, readFileSync } from "node:fs";
import net from "node:net";
import path from "node:path";
import readline from "node:readline";
import { build } from "./launcher_page.mjs";

const windowsBuild = process.env.PAGE_TEST_WINDOWS;
export const onWindows = Boolean(windowsBuild);
export const engineBuild = windowsBuild || build;

export function startEngine(directory, launcher) {
  return onWindows ? startWindowsProgram(directory, launcher) : startNativeEngine(directory, launcher);
}

function startNativeEngine(directory, launcher) {
  const child = spawn(path.join(directory, "Patcher"), [], { stdio: ["pipe", "pipe", "inherit"], cwd: "/" });
  child.stdin.on("error", () => {});
  launcher.onRequest = (text) => child.stdin.write(text + "\n");
  const lines = readline.createInterface({ input: child.stdout });
  lines.on("line", (line) => launcher.sendTexts(line).catch(() => {}));
  const ended = Promise.all([once(child, "exit"), once(lines, "close")]).then(([[code]]) => code);
  return { ended, stop: () => child.kill("SIGKILL") };
}

function startWindowsProgram(directory, launcher) {
  for (const file of ["bin/Patcher.exe", "web_view_stand_in/WebView2Loader.dll"]) {
    copyFileSync(path.join(windowsBuild, file), path.join(directory, path.basename(file)));
  }
  const server = net.createServer().listen(0, "127.0.0.1");
  const connected = once(server, "connection").then(([connection]) => connection);
  const ended = runUnderWine(directory, server);
  let loaded;
  const page = new Promise((resolve) => { loaded = resolve; });
  connected.then((connection) => {
    connection.on("error", () => {});
    readStandIn(connection, (verb, text) => {
      if (verb === "message") launcher.sendTexts(text).catch(() => {});
      if (verb === "navigate") loaded(text);
    });
  });
  // The browser shows this page already. What it asks while the program starts waits until that has the page.
  const talking = page.then(async (text) => {
    assert.equal(text, readFileSync(path.join(build, "Patcher/generated/page/launcher.html"), "utf8"));
    const connection = await connected;
    connection.write("complete\x1e");
    return connection;
  });
  launcher.onRequest = (text) => talking.then((connection) => connection.write(`send\x1f${text}\x1e`));
  // The program ends with its connection.
  return { ended, stop: () => connected.then((connection) => connection.destroy()) };
}

async function runUnderWine(directory, server) {
  await once(server, "listening");
  const environment = { ...process.env, WEB_VIEW_STAND_IN_PORT: String(server.address().port) };
  const child = spawn("wine", [path.join(directory, "Patcher.exe")], { cwd: "/", stdio: "ignore", env: environment });
  const [code] = await once(child, "exit");
  server.close();
  return code;
}

// Lines of the stand-in, each as its fields.
function readStandIn(connection, onLine) {
  let rest = "";
  connection.setEncoding("utf8").on("data", (text) => {
    const lines = (rest + text).split("\x1e");
    rest = lines.pop();
    for (const line of lines) onLine(...line.split("\x1f"));
  });
}
