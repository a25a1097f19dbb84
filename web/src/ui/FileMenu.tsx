import { useEffect, useRef } from "preact/hooks";
import { countExamples } from "../document/document";
import type { State, Studio } from "../studio";
import { Icon } from "./Icon";

export async function importAll(studio: Studio, files: Iterable<File>): Promise<void> {
  for (const file of files) {
    await studio.importFile(file.name, new Uint8Array(await file.arrayBuffer()));
  }
}

export function FileMenu({ studio, state }: { studio: Studio; state: State }) {
  const menu = useRef<HTMLDetailsElement>(null);
  const traces = useRef<HTMLInputElement>(null);
  const model = useRef<HTMLInputElement>(null);
  const hasExamples = countExamples(state.history.now) > 0;
  const hasModel = state.model !== null;

  const close = () => menu.current?.removeAttribute("open");
  useEffect(() => {
    const outside = (event: Event) => {
      if (!menu.current?.contains(event.target as Node)) close();
    };
    addEventListener("pointerdown", outside);
    addEventListener("focusin", outside);
    return () => {
      removeEventListener("pointerdown", outside);
      removeEventListener("focusin", outside);
    };
  }, []);

  const item = (text: string, note: string, act: () => void, enabled = true) => (
    <li>
      <button
        type="button"
        disabled={!enabled}
        onClick={() => {
          close();
          act();
        }}
      >
        {text} <span class="faint">{note}</span>
      </button>
    </li>
  );

  async function taken(input: HTMLInputElement, asModel: boolean): Promise<void> {
    const files = [...(input.files ?? [])];
    input.value = "";
    if (!asModel) return importAll(studio, files);
    for (const file of files) {
      await studio.importModel(file.name, new Uint8Array(await file.arrayBuffer()));
    }
  }

  return (
    <details
      ref={menu}
      class="menu"
      onKeyDown={(event) => {
        if (event.key !== "Escape") return;
        close();
        menu.current?.querySelector("summary")?.focus();
      }}
    >
      <summary class="button" aria-label="Files">
        <Icon name="file" /> <span class="wide">Files</span> <Icon name="chevron" />
      </summary>
      <div class="sheet">
        <h3 id="menu-in">Bring in</h3>
        <ul aria-labelledby="menu-in">
          {item("Examples", "JSON Lines, CSV, XML", () => traces.current?.click())}
          {item("Model", "trained elsewhere", () => model.current?.click())}
          {item("Starter set", "a dozen gestures", () => void studio.addStarterSet())}
        </ul>
        <h3 id="menu-out">Take home</h3>
        <ul aria-labelledby="menu-out">
          {item("Model", "for any host", () => void studio.exportFile("model"), hasModel)}
          {item("Examples", "JSON Lines", () => void studio.exportFile("traces"), hasExamples)}
          {item("Scene node", "VRML", () => void studio.exportFile("scene"), hasModel)}
          {item("Report", "HTML", () => void studio.exportFile("report"), hasModel)}
        </ul>
        <ul>{item("Clear everything", "", () => studio.clear(), hasExamples || hasModel)}</ul>
      </div>
      <input
        ref={traces}
        class="hidden"
        type="file"
        multiple
        tabIndex={-1}
        aria-label="Examples to bring in"
        accept=".jsonl,.ndjson,.json,.csv,.tsv,.xml"
        onChange={(event) => void taken(event.currentTarget, false)}
      />
      <input
        ref={model}
        class="hidden"
        type="file"
        tabIndex={-1}
        aria-label="Model to bring in"
        onChange={(event) => void taken(event.currentTarget, true)}
      />
    </details>
  );
}
