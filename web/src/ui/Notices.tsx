import { useEffect } from "preact/hooks";
import type { Notice, Studio } from "../studio";
import { Icon } from "./Icon";

const shownFor = 9000;

export function Notices({ studio, notices }: { studio: Studio; notices: readonly Notice[] }) {
  return (
    <div class="notices" role="log" aria-label="Messages" aria-live="polite">
      {notices.map((notice) => (
        <One key={notice.id} studio={studio} notice={notice} />
      ))}
    </div>
  );
}

function One({ studio, notice }: { studio: Studio; notice: Notice }) {
  useEffect(() => {
    // What went wrong, or asks for a choice, stays until it has been read.
    if (notice.kind === "problem" || notice.details.length > 0 || notice.action) return;
    const timer = setTimeout(() => studio.dismiss(notice.id), shownFor);
    return () => clearTimeout(timer);
  }, [notice.id]);
  return (
    <div class={`notice ${notice.kind}`}>
      <div>
        <p>{notice.text}</p>
        {notice.details.length > 0 && (
          <ul>
            {notice.details.map((it) => (
              <li key={it}>{it}</li>
            ))}
          </ul>
        )}
      </div>
      {notice.action && (
        <button type="button" class="quiet" onClick={notice.action.act}>
          {notice.action.text}
        </button>
      )}
      {notice.undo && (
        <button
          type="button"
          class="quiet"
          onClick={() => {
            studio.undo();
            studio.dismiss(notice.id);
          }}
        >
          Undo
        </button>
      )}
      <button
        type="button"
        class="quiet"
        aria-label="Dismiss"
        onClick={() => studio.dismiss(notice.id)}
      >
        <Icon name="close" />
      </button>
    </div>
  );
}
