// A patch server on a loopback port that serves what patch-publish made and misbehaves as told.
import { readFile } from "node:fs/promises";
import http from "node:http";
import path from "node:path";

export class PatchServer {
  // Request path to body, in front of the published folder.
  content = new Map();
  // Request path to what happens to its requests: a status number, "cut" or "wrong".
  faults = new Map();
  requests = new Map();
  #held = new Map();

  static async start(folder) {
    const server = new PatchServer();
    server.folder = folder;
    server.http = http.createServer((request, response) => server.#serve(request, response));
    await new Promise((resolve) => server.http.listen(0, "127.0.0.1", resolve));
    return server;
  }

  get url() {
    return "http://127.0.0.1:" + this.http.address().port;
  }

  count(name) {
    return this.requests.get(name) || 0;
  }

  // Requests for that path stay unanswered until the function that this returns is called.
  hold(name) {
    let release;
    this.#held.set(name, new Promise((resolve) => { release = resolve; }));
    return () => {
      this.#held.delete(name);
      release();
    };
  }

  async #serve(request, response) {
    const name = decodeURIComponent(request.url);
    this.requests.set(name, this.count(name) + 1);
    await this.#held.get(name);
    const fault = this.faults.get(name);
    const body = await this.#body(name);
    if (typeof fault === "number" || body === null) {
      response.writeHead(fault || 404).end();
    } else if (fault === "cut") {
      response.writeHead(200, { "Content-Length": body.length });
      response.write(body.subarray(0, body.length / 2), () => response.destroy());
    } else {
      response.writeHead(200, { "Content-Length": body.length });
      response.end(fault === "wrong" ? body.map((byte) => byte ^ 1) : body);
    }
  }

  async #body(name) {
    if (this.content.has(name)) return Buffer.from(this.content.get(name));
    return readFile(path.join(this.folder, name)).catch(() => null);
  }

  stop() {
    this.http.closeAllConnections();
    return new Promise((resolve) => this.http.close(resolve));
  }
}
