// Saves a scheme, has an overlapping one refused and lists what is stored:
//
//     node examples/node/schemes.mjs LIBRARY ACCOUNT

import { readFileSync } from 'node:fs'
import { Session } from './rebate.mjs'

const SUPPLIERS = 24
const [library, account] = process.argv.slice(2)

async function save(session, types, name) {
  const { FRebateType, ...request } = JSON.parse(readFileSync(new URL(`../${name}`, import.meta.url), 'utf8'))
  // Rows hold their values as text.
  const SchemeConst = types.find((row) => row.FRebateType === String(FRebateType))
  return session.callAsync('BaseInfoMgr.SaveOneSchemeData', { SchemeConst, ...request })
}

const session = new Session(account, library)
try {
  const types = session.call('BaseInfoMgr.LoadRebateTypeData', { lRebateClass: SUPPLIERS })
  for (const row of types) console.log('type', row.FRebateType, row.FTypeName)

  for (const name of ['supplier_goods.json', 'supplier_goods_overlap.json']) {
    const answer = await save(session, types, name)
    console.log(answer.OK ? 'saved' : `refused: ${answer.Err}`, name)
    for (const row of answer.Repeat ?? []) console.log('overlaps', row.FSchemeName, row.FOrgName, row.FItemName)
  }

  const dct = { RebateClassType: SUPPLIERS, SchemeName: '洗护' }
  for (const row of session.call('BaseInfoMgr.LoadSchemeListData', { dct })) {
    console.log('scheme', row.FSchemeID, row.FSchemeName, row.FEnable)
  }

  try {
    session.call('BaseInfoMgr.Rebate')
  } catch (error) {
    console.log('error', error.number, error.message)
  }
} finally {
  session.close()
}
