// The engine behind the page: patcher-stdio or, if PAGE_TEST_WINDOWS names the folder of its build, the Windows program
// under Wine. The loader of its web view is the stand-in that passes on what the program tells its page and what the
// page asks.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { once } from "node:events";
import { copyFileSync, readFileSync } from "node:fs";
import path from "node:path";
import { build } from "./launcher_page.mjs";

const windowsBuild = process.env.PAGE_TEST_WINDOWS;
export const onWindows = Boolean(windowsBuild);
export const engineBuild = windowsBuild || build;

const options = { stdio: ["pipe", "pipe", onWindows ? "ignore" : "inherit"], cwd: "/" };

// Gives { ended, stop }: the exit code to come, when nothing more is told, and how to end it as a power cut would.
export function startEngine(directory, launcher) {
  const child = onWindows ? startWindowsProgram(directory, launcher) : startNativeEngine(directory, launcher);
  child.stdin.on("error", () => {});
  const ended = Promise.all([once(child, "exit"), once(child.stdout, "close")]).then(([[code]]) => code);
  // The Windows program, which Wine runs beside the process that was started, ends with its input.
  return { ended, stop: () => (onWindows ? child.stdin.destroy() : child.kill("SIGKILL")) };
}

function startNativeEngine(directory, launcher) {
  const child = spawn(path.join(directory, "Patcher"), [], options);
  launcher.onRequest = (text) => child.stdin.write(text + "\n");
  readPieces(child.stdout, "\n", (line) => tell(launcher, line));
  return child;
}

function startWindowsProgram(directory, launcher) {
  for (const file of ["bin/Patcher.exe", "web_view_stand_in/WebView2Loader.dll"]) {
    copyFileSync(path.join(windowsBuild, file), path.join(directory, path.basename(file)));
  }
  const child = spawn("wine", [path.join(directory, "Patcher.exe")], options);
  // What the page asks while the program starts waits until that has the page.
  let unsent = [];
  launcher.onRequest = (text) => (unsent ? unsent.push(text) : child.stdin.write(`send\x1f${text}\x1e`));
  readPieces(child.stdout, "\x1e", (piece) => {
    const [verb, text] = piece.split("\x1f");
    if (verb === "message") tell(launcher, text);
    if (verb !== "navigate") return;
    // The browser shows this page already.
    assert.equal(text, readFileSync(path.join(build, "Patcher/generated/page/launcher.html"), "utf8"));
    child.stdin.write(["complete", ...unsent.map((request) => "send\x1f" + request)].map((line) => line + "\x1e").join(""));
    unsent = null;
  });
  return child;
}

function tell(launcher, text) {
  launcher.sendTexts(text).catch(() => {});
}

function readPieces(stream, end, take) {
  let rest = "";
  stream.setEncoding("utf8").on("data", (text) => {
    const pieces = (rest + text).split(end);
    rest = pieces.pop();
    pieces.forEach(take);
  });
}
