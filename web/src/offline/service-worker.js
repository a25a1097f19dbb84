// Keeps the files of one build, so that the page works without a network. A new build takes over when
// the pages of the old one are closed.
const files = __FILES__;
const cacheName = "vesk-studio-" + __VERSION__;

self.addEventListener("install", (event) => {
  event.waitUntil(
    caches.open(cacheName).then((cache) =>
      // Not what the browser may have kept of an older build.
      cache.addAll(files.map((file) => new Request(file, { cache: "reload" }))),
    ),
  );
});

self.addEventListener("activate", (event) => {
  const others = async () => {
    for (const name of await caches.keys()) {
      if (name.startsWith("vesk-studio-") && name !== cacheName) await caches.delete(name);
    }
    await self.clients.claim();
  };
  event.waitUntil(others());
});

self.addEventListener("fetch", (event) => {
  if (event.request.method !== "GET") return;
  const kept = async () => {
    const cache = await caches.open(cacheName);
    const found = await cache.match(event.request, { ignoreSearch: true, ignoreVary: true });
    return found ?? fetch(event.request);
  };
  event.respondWith(kept());
});
