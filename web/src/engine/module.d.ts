declare module "studio-engine/studio.mjs" {
  export interface Engine {
    call(
      request: string,
      argumentsJson: string,
      file: string | Uint8Array,
      progress: ((share: number) => void) | null,
    ): string;
    /** A view of the engine's memory. */
    file(): Uint8Array;
  }
  interface Module {
    Engine: new () => Engine;
  }
  export default function load(options?: { wasmBinary?: Uint8Array }): Promise<Module>;
}
