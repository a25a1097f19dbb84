// Serves web/dist on the loopback address and prints where.
import { preview } from "vite";

const server = await preview({ root: import.meta.dirname ?? new URL(".", import.meta.url).pathname });
console.log(`The studio is at ${server.resolvedUrls.local[0]} (Ctrl+C ends it)`);
