import type { Stage } from './types';

/** How far a request is, of which it is known how many stages it goes through; they count alike. */
export class Steps {
    private begun = 0;
    private stage: Stage | undefined;

    /** With no stages, nothing is told. */
    constructor(
        private readonly count: number,
        private readonly told: (stage: Stage, done: number) => void,
    ) {}

    /** `part` of the stage is done. Another one than before begins the next. */
    tell(stage: Stage, part: number): void {
        if (this.count === 0) return;
        if (stage !== this.stage) this.begun += 1;
        this.stage = stage;
        this.told(stage, Math.min(1, (this.begun - 1 + part) / this.count));
    }
}
