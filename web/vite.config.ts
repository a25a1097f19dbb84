import { createHash } from "node:crypto";
import { readFileSync, readdirSync } from "node:fs";
import { resolve } from "node:path";
import { defineConfig, type Plugin } from "vitest/config";

const here = import.meta.dirname ?? __dirname;

/** Where scripts/studio has built the engine. */
const engine = resolve(process.env.VESK_ENGINE ?? resolve(here, "../build/studio"));

/** Writes the service worker, which keeps every file of this build. */
function offline(): Plugin {
  return {
    name: "offline",
    apply: "build",
    generateBundle(_, bundle) {
      const built = Object.keys(bundle).filter((name) => !name.endsWith(".map"));
      const files = ["./", ...built, ...readdirSync(resolve(here, "public"))].filter(
        (name) => name !== "index.html",
      );
      const content = createHash("sha256");
      for (const name of built.sort()) {
        const file = bundle[name]!;
        content.update(file.type === "asset" ? file.source : file.code);
      }
      const source = readFileSync(resolve(here, "src/offline/service-worker.js"), "utf8")
        .replace("__FILES__", JSON.stringify(files))
        .replace("__VERSION__", JSON.stringify(content.digest("hex").slice(0, 16)));
      this.emitFile({ type: "asset", fileName: "sw.js", source });
    },
  };
}

export default defineConfig({
  base: "./",
  resolve: { alias: { "studio-engine": engine } },
  server: { host: "127.0.0.1", fs: { allow: [here, engine] } },
  preview: { host: "127.0.0.1" },
  build: { target: "es2022", assetsInlineLimit: 0, modulePreload: { polyfill: false } },
  worker: { format: "es" },
  esbuild: { jsx: "automatic", jsxImportSource: "preact" },
  plugins: [offline()],
  test: { include: ["tests/unit/**/*.test.{ts,tsx}"], environment: "node" },
});
