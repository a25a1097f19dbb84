import { render } from "preact";
import { Studio } from "./studio";
import { App } from "./ui/App";
import "./style.css";

const studio = new Studio();
render(<App studio={studio} />, document.getElementById("studio")!);
void studio.begin();

// What was drawn in the last moment is kept too.
document.addEventListener("visibilitychange", () => {
  if (document.visibilityState === "hidden" && studio.state.storage === "saving") {
    void studio.saveNow();
  }
});

if (import.meta.env.PROD && "serviceWorker" in navigator) {
  navigator.serviceWorker.register("./sw.js").catch(() => {
    // The page works without it while there is a network.
  });
}
