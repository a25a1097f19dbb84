// The engine in WebAssembly and the native one, asked in the same way.
import { spawn } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { pathToFileURL } from "node:url";

/** The module of a folder; `call` returns the text of the reply and the bytes of its file. */
export async function wasmEngine(folder) {
  globalThis.self ??= globalThis;
  const { default: load } = await import(pathToFileURL(join(folder, "studio.mjs")).href);
  const module = await load({ wasmBinary: readFileSync(join(folder, "studio.wasm")) });
  const engine = new module.Engine();
  return {
    async call(request, given = {}, file = new Uint8Array()) {
      const json = engine.call(request, JSON.stringify(given), file, null);
      return { json, file: Buffer.from(engine.file()) };
    },
    end() {},
  };
}

/** A program that reads requests and writes replies (web/engine/native.cpp). */
export function nativeEngine(program) {
  const folder = mkdtempSync(join(tmpdir(), "vesk-studio-"));
  const child = spawn(program, { cwd: folder, stdio: ["pipe", "pipe", "inherit"] });
  let buffered = Buffer.alloc(0);
  let waiting = null;
  child.stdout.on("data", (chunk) => {
    buffered = Buffer.concat([buffered, chunk]);
    answer();
  });

  function answer() {
    if (!waiting) return;
    const first = buffered.indexOf("\n");
    const second = first < 0 ? -1 : buffered.indexOf("\n", first + 1);
    if (second < 0) return;
    const end = second + 1 + Number(buffered.subarray(first + 1, second));
    if (buffered.length < end) return;
    const reply = {
      json: buffered.subarray(0, first).toString(),
      file: Buffer.from(buffered.subarray(second + 1, end)),
    };
    buffered = buffered.subarray(end);
    const resolve = waiting;
    waiting = null;
    resolve(reply);
  }

  return {
    call(request, given = {}, file = new Uint8Array()) {
      const name = file.length > 0 ? join(folder, "request") : "";
      if (name) writeFileSync(name, file);
      child.stdin.write(`${request}\n${JSON.stringify(given)}\n${name}\n`);
      return new Promise((resolve) => {
        waiting = resolve;
        answer();
      });
    },
    end() {
      child.stdin.end();
      rmSync(folder, { recursive: true });
    },
  };
}
