import { useLayoutEffect, useRef } from "preact/hooks";
import { plotElement } from "./svg";

/** A plot of the engine. */
export function Plot({ svg }: { svg: string }) {
  const root = useRef<HTMLDivElement>(null);
  useLayoutEffect(() => {
    const element = plotElement(svg);
    root.current!.replaceChildren(element ?? "This plot cannot be shown.");
  }, [svg]);
  return <div ref={root} class="plot" />;
}
