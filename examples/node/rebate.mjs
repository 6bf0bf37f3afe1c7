// The rebate component from Node, through its shared library and the npm package koffi.

import { createRequire } from 'node:module'

// Found in a node_modules folder here or above, or under NODE_PATH, which `import` doesn't look at.
const koffi = createRequire(import.meta.url)('koffi')

// What the component answered in the place of a result.
export class RebateError extends Error {
  constructor({ number, source, description }) {
    super(`${description} (${source}, ${number})`)
    this.number = number
  }
}

const loaded = new Map()

function load(path) {
  if (loaded.has(path)) return loaded.get(path)
  const library = koffi.load(path)
  const free = library.func('void rebate_free(void *text)')
  // A text that is read as a string and then freed.
  const text = koffi.disposable('RebateText', 'str', free)
  const functions = {
    open: library.func('rebate_open', text, ['str', 'uint32_t', koffi.out(koffi.pointer('uint64_t'))]),
    call: library.func('rebate_call', text, ['uint64_t', 'str']),
    close: library.func('void rebate_close(uint64_t session)'),
  }
  loaded.set(path, functions)
  return functions
}

function resultOf(answer) {
  const { result, error } = JSON.parse(answer)
  if (error) throw new RebateError(error)
  return result
}

// Calls on one account: `session.call('BaseInfoMgr.GetRebateRange', { lType: 2040 })`.
export class Session {
  #functions
  #number
  #last = Promise.resolve()

  constructor(dsn, library = 'librebate.so.1') {
    this.#functions = load(library)
    const number = [0]
    const error = this.#functions.open(dsn, 0, number)
    if (error) resultOf(error)
    this.#number = number[0]
  }

  // The result of an operation; throws what the operation lets through.
  call(op, args = {}) {
    return resultOf(this.#functions.call(this.#number, JSON.stringify({ op, args })))
  }

  // Likewise, on a thread of Node's pool. A session serves one call at a time: they queue up.
  callAsync(op, args = {}) {
    const run = () =>
      new Promise((done, failed) => {
        const request = JSON.stringify({ op, args })
        this.#functions.call.async(this.#number, request, (error, answer) => (error ? failed(error) : done(answer)))
      })
    const answer = this.#last.then(run)
    this.#last = answer.catch(() => {})
    return answer.then(resultOf)
  }

  close() {
    this.#functions.close(this.#number)
  }
}
