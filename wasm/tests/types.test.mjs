// The declarations: they are what the modules export, and programs compile against them.

import assert from "node:assert/strict";
import { readdirSync, readFileSync } from "node:fs";
import test from "node:test";

import { Consumer } from "./consumer.mjs";
import { packageFolder, sourceFolder } from "./support.mjs";

const declared = readdirSync(packageFolder).filter((name) => name.endsWith(".d.mts"));
const read = (name) => readFileSync(packageFolder + name, "utf8");

/** Returns: the values that a declaration exports; types and interfaces are none. */
function exportsOf(declaration) {
  const names = [...declaration.matchAll(/^export (?:function|class|const) (\w+)/gm)].map(([, name]) => name);
  for (const [, list] of declaration.matchAll(/^export \{([^}]*)\}/gm)) names.push(...list.trim().split(/\s*,\s*/));
  return names.sort();
}

test("every public module has declarations", () => {
  const { exports } = JSON.parse(read("package.json"));
  const types = Object.values(exports).map(({ types }) => types).filter(Boolean);
  assert.deepEqual(types.map((path) => path.slice(2)).sort(), declared.sort());
  for (const [path, { types, default: module }] of Object.entries(exports))
    if (types !== undefined) assert.equal(types.replace(".d.mts", ".mjs"), module, path);
});

for (const name of declared) {
  test(`${name} exports what the module does`, async () => {
    const module = await import(packageFolder + name.replace(".d.mts", ".mjs"));
    assert.deepEqual(exportsOf(read(name)), Object.keys(module).sort());
  });

  test(`${name}: classes have the members that are declared`, async () => {
    const module = await import(packageFolder + name.replace(".d.mts", ".mjs"));
    for (const [, className, body] of read(name).matchAll(/^export class (\w+)[^{]*\{\n(.*?)^\}/gms)) {
      const members = [...body.matchAll(/^ {2}(?:readonly )?(\w+)[(:]/gm)].map(([, member]) => member);
      const { prototype } = module[className];
      // Errors get their members in the constructor.
      if (prototype instanceof Error) continue;
      assert.deepEqual(["constructor", ...members].sort(), Object.getOwnPropertyNames(prototype).sort());
    }
  });
}

test("a program compiles against the types", () => {
  const consumer = new Consumer();
  consumer.write("program.mts", readFileSync(`${sourceFolder}wasm/tests/types_test.mts`, "utf8"));
  consumer.run("tsc", "--strict", "--noEmit", "--module", "node16", "--target", "es2022", "--lib", "es2022,dom", "program.mts");
  consumer.remove();
});
