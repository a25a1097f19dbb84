import { useLayoutEffect, useRef } from "preact/hooks";
import { plotElement } from "./svg";

/** Much wider ones would be too small to read if they were made to fit. */
const widestFitted = 3;

/** A plot of the engine. */
export function Plot({ svg }: { svg: string }) {
  const root = useRef<HTMLDivElement>(null);
  useLayoutEffect(() => {
    const element = plotElement(svg);
    if (element) {
      const [, , width = 1, height = 1] = (element.getAttribute("viewBox") ?? "").split(" ").map(Number);
      element.classList.toggle("is-fitted", width < widestFitted * height);
    }
    root.current!.replaceChildren(element ?? "This plot cannot be shown.");
  }, [svg]);
  return <div ref={root} class="plot" />;
}
