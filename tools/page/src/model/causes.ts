/// Findings gathered by their cause.

import type { Cost, Finding } from '../engine/types';

export interface CauseGroup {
    name: string;
    cost: Cost;
    sentence: string;
    mend: string;
    findings: Finding[];
}

/// What costs most stands first.
const ORDER: Cost[] = ['entries', 'times', 'text', 'hidden', 'letters', 'looks'];

export function groupsOf(findings: Finding[]): CauseGroup[] {
    const groups = new Map<string, CauseGroup>();
    for (const finding of findings) {
        const key = `${finding.cost} ${finding.name}`;
        const { name, cost, sentence, mend = '' } = finding;
        const group = groups.get(key) ?? { name, cost, sentence, mend, findings: [] };
        group.findings.push(finding);
        groups.set(key, group);
    }
    return [...groups.values()].sort((a, b) => ORDER.indexOf(a.cost) - ORDER.indexOf(b.cost));
}
