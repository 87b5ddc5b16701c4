// A project that has the package installed, in a folder of its own.

import { execFileSync } from "node:child_process";
import { mkdirSync, mkdtempSync, rmSync, symlinkSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";

import { packageFolder } from "./support.mjs";

export class Consumer {
  folder = mkdtempSync(join(tmpdir(), "tesk-consumer-"));

  /** An empty one has the package not yet. */
  constructor({ empty = false } = {}) {
    mkdirSync(join(this.folder, "node_modules"));
    if (!empty) symlinkSync(packageFolder, join(this.folder, "node_modules", "tesk"));
    this.write("package.json", JSON.stringify({ type: "module", private: true }));
  }

  write(name, content) {
    writeFileSync(join(this.folder, name), content);
  }

  /** Returns: what the command prints. Throws: Error with that when it fails. */
  run(command, ...words) {
    try {
      return execFileSync(command, words, { cwd: this.folder, encoding: "utf8", stdio: "pipe" });
    } catch (error) {
      throw new Error(`${command} ${words.join(" ")}:\n${error.stdout}${error.stderr}`);
    }
  }

  remove() {
    rmSync(this.folder, { recursive: true });
  }
}
