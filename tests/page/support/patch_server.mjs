// A patch server on a loopback port that serves what patch-publish made and misbehaves as told.
import { once } from "node:events";
import { readFile } from "node:fs/promises";
import http from "node:http";
import path from "node:path";

export class PatchServer {
  // Request path to what happens to its requests: a status number, "cut", "wrong", or a promise that they wait for.
  faults = new Map();
  // Request path to what is served there in place of a file of the folder.
  content = new Map();
  // Request paths in their order.
  requests = [];

  static async start(folder) {
    const server = new PatchServer();
    server.folder = folder;
    server.http = http.createServer((request, response) => server.#serve(request, response)).listen(0, "127.0.0.1");
    await once(server.http, "listening");
    return server;
  }

  get url() {
    return "http://127.0.0.1:" + this.http.address().port;
  }

  // Requests for that path stay unanswered until the function that this returns is called.
  hold(name) {
    let release;
    this.faults.set(name, new Promise((resolve) => { release = resolve; }));
    return () => {
      this.faults.delete(name);
      release();
    };
  }

  async #serve(request, response) {
    const name = decodeURIComponent(request.url);
    this.requests.push(name);
    const fault = await this.faults.get(name);
    const body = this.content.get(name) ?? await readFile(path.join(this.folder, name)).catch(() => null);
    if (typeof fault === "number" || body === null) {
      response.writeHead(fault || 404).end();
      return;
    }
    response.writeHead(200, { "Content-Length": body.length });
    if (fault === "cut") response.write(body.subarray(0, body.length / 2), () => response.destroy());
    else response.end(fault === "wrong" ? body.map((byte) => byte ^ 1) : body);
  }

  stop() {
    this.http.closeAllConnections();
    this.http.close();
  }
}
