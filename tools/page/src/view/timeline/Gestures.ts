/// Mouse, wheel and fingers on the time line.

import { OVERVIEW_TOP } from './paint';

export interface Moved {
    seekTo(pixel: number): void;
    choose(pixel: number, y: number): void;
    zoom(factor: number, pixel: number): void;
    pan(pixels: number): void;
    panToWhole(pixel: number): void;
}

const WHEEL = 0.0018;

export class Gestures {
    private readonly fingers = new Map<number, number>();
    private isInOverview = false;
    private hasMoved = false;

    constructor(
        private readonly field: HTMLElement,
        private readonly moved: Moved,
    ) {
        field.addEventListener('wheel', (event) => this.onWheel(event), { passive: false });
        field.addEventListener('pointerdown', (event) => this.onDown(event));
        field.addEventListener('pointermove', (event) => this.onMove(event));
        field.addEventListener('pointerup', (event) => this.onUp(event));
        field.addEventListener('pointercancel', (event) => this.fingers.delete(event.pointerId));
    }

    private x(event: MouseEvent): number {
        return event.clientX - this.field.getBoundingClientRect().left;
    }

    private y(event: MouseEvent): number {
        return event.clientY - this.field.getBoundingClientRect().top;
    }

    /// Up and down comes closer and goes farther, left and right goes along.
    private onWheel(event: WheelEvent): void {
        event.preventDefault();
        const isSideways = event.shiftKey || Math.abs(event.deltaX) > Math.abs(event.deltaY);
        if (isSideways) this.moved.pan(event.deltaX || event.deltaY);
        else this.moved.zoom(Math.exp(-event.deltaY * WHEEL), this.x(event));
    }

    private onDown(event: PointerEvent): void {
        if (event.button !== 0) return;
        this.field.setPointerCapture(event.pointerId);
        this.fingers.set(event.pointerId, this.x(event));
        this.hasMoved = this.fingers.size > 1;
        this.isInOverview = this.y(event) >= OVERVIEW_TOP - 3;
        if (this.fingers.size === 1) this.go(event);
    }

    private go(event: PointerEvent): void {
        if (this.isInOverview) this.moved.panToWhole(this.x(event));
        else this.moved.seekTo(this.x(event));
    }

    private onMove(event: PointerEvent): void {
        const before = this.fingers.get(event.pointerId);
        if (before === undefined) return;
        const x = this.x(event);
        if (Math.abs(x - before) > 2) this.hasMoved = true;
        if (this.fingers.size === 1) this.go(event);
        else this.pinch(event.pointerId, before, x);
        if (this.hasMoved) this.fingers.set(event.pointerId, x);
    }

    private pinch(id: number, before: number, x: number): void {
        const other = [...this.fingers].find(([finger]) => finger !== id)?.[1];
        if (other === undefined) return;
        const apart = Math.abs(before - other);
        if (apart > 4) this.moved.zoom(Math.abs(x - other) / apart || 1, (x + other) / 2);
        this.moved.pan((before - x) / 2);
    }

    private onUp(event: PointerEvent): void {
        this.fingers.delete(event.pointerId);
        if (!this.hasMoved && !this.isInOverview) this.moved.choose(this.x(event), this.y(event));
    }
}
