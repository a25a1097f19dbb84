import { existsSync, readdirSync } from "node:fs";
import { join } from "node:path";
import { fileURLToPath } from "node:url";

const folder =
  process.env.VESK_DATA_DIR || fileURLToPath(new URL("../../../shared/data", import.meta.url));

/** The files of recorded traces, in VESK_DATA_DIR or the folder beside the repository; none where there are none. */
export function recordedFiles() {
  if (!existsSync(folder)) return [];
  return readdirSync(folder)
    .filter((name) => name.endsWith(".jsonl"))
    .sort()
    .map((name) => join(folder, name));
}
