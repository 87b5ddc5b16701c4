// The page's side of the worker: questions and answers.

export class Desk {
  #worker;
  #open = new Map();
  #count = 0;

  /** The source of the worker and the module stand in the page: it opens from a folder, too. */
  constructor(source, module) {
    this.#worker = new Worker(URL.createObjectURL(new Blob([source], { type: "text/javascript" })));
    this.#worker.onmessage = ({ data: { id, answer, error } }) => {
      const { resolve, reject } = this.#open.get(id);
      this.#open.delete(id);
      if (error === undefined) resolve(answer);
      else reject(new Error(error));
    };
    this.#worker.onerror = ({ message }) => {
      for (const { reject } of this.#open.values()) reject(new Error(message));
      this.#open.clear();
    };
    /** Fails where the browser cannot run the module. Questions may be asked before. */
    this.started = this.ask("start", { bytes: module }, [module.buffer]);
  }

  /** Returns: the answer. Throws: Error with the worker's words. */
  ask(question, values = {}, transfer = []) {
    const id = ++this.#count;
    return new Promise((resolve, reject) => {
      this.#open.set(id, { resolve, reject });
      this.#worker.postMessage({ id, question, values }, transfer);
    });
  }
}
