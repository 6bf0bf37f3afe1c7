// A client of `rebate call`, with nothing but what comes with Node:
//
//     node examples/node/call_client.mjs REBATE ACCOUNT

import { spawn } from 'node:child_process'
import { once } from 'node:events'
import { createInterface } from 'node:readline'

// One `rebate call` process. Requests may be sent without waiting: the answers find them by their ids.
class Rebate {
  #process
  #waiting = new Map()
  #lastId = 0

  constructor(program, dsn) {
    this.#process = spawn(program, ['call', '--dsn', dsn], { stdio: ['pipe', 'pipe', 'inherit'] })
    this.#process.stdin.on('error', () => {}) // the end of the process tells
    createInterface({ input: this.#process.stdout }).on('line', (line) => {
      const answer = JSON.parse(line)
      this.#waiting.get(answer.id).resolve(answer)
      this.#waiting.delete(answer.id)
    })
    this.#process.on('close', (status) => {
      for (const { reject } of this.#waiting.values()) reject(new Error(`rebate call ended with status ${status}`))
    })
  }

  // The answer to a request, whole.
  ask(request) {
    const id = ++this.#lastId
    return new Promise((resolve, reject) => {
      this.#waiting.set(id, { resolve, reject })
      this.#process.stdin.write(JSON.stringify({ id, ...request }) + '\n')
    })
  }

  // The result of an operation; throws where it fails, also where its result alone wouldn't tell.
  async call(op, args = {}) {
    const { result, error, failure } = await this.ask({ op, args, tell: ['failure'] })
    if (error ?? failure) throw new Error(`${op}: ${(error ?? failure).description}`)
    return result
  }

  async close() {
    this.#process.stdin.end()
    const [status] = await once(this.#process, 'close')
    if (status !== 0) throw new Error(`rebate call ended with status ${status}`)
  }
}

const [program, account] = process.argv.slice(2)
const rebate = new Rebate(program, account)

const { operations } = (await rebate.ask({ describe: true })).describe
const names = operations.find(({ op }) => op === 'BaseInfoMgr.GetRebateRange').args.map(({ name }) => name)
console.log(operations.length, 'operations; GetRebateRange takes', names.join(', '))

const [types, mode] = await Promise.all([
  rebate.call('BaseInfoMgr.LoadRebateTypeData', { lRebateClass: 24 }),
  rebate.call('BaseInfoMgr.TransMode'),
])
console.log('type', types[0].FRebateType, types[0].FTypeName)
console.log('mode', mode)
try {
  await rebate.call('BaseInfoMgr.LoadSchemeListData', { dct: {} })
} catch (error) {
  console.log(error.message)
}
await rebate.close()
